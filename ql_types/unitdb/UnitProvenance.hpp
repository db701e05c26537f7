// UnitProvenance: a publication that defines units (a standard, a handbook), as the catalogue names it.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace QLTypeSys {

/// A defining publication of units; a plain value.
class UnitProvenance {
 public:
  UnitProvenance(std::wstring identifier, std::wstring title, std::wstring subtitle, std::wstring organization,
                 std::wstring organizationFullName, std::vector<std::wstring> urls, std::wstring edition, int year)
      : identifier_(std::move(identifier)),
        title_(std::move(title)),
        subtitle_(std::move(subtitle)),
        organization_(std::move(organization)),
        organizationFullName_(std::move(organizationFullName)),
        urls_(std::move(urls)),
        edition_(std::move(edition)),
        year_(year) {}

  std::wstring getProvenanceID() const { return identifier_; }
  std::wstring getTitle() const { return title_; }
  std::wstring getSubtitle() const { return subtitle_; }
  std::wstring getOrganization() const { return organization_; }
  std::wstring getOrganizationFullName() const { return organizationFullName_; }
  /// The links, in catalogue order.
  const std::vector<std::wstring>& getURLs() const { return urls_; }
  std::wstring getEdition() const { return edition_; }
  int getYear() const { return year_; }

 private:
  std::wstring identifier_;
  std::wstring title_;
  std::wstring subtitle_;
  std::wstring organization_;
  std::wstring organizationFullName_;
  std::vector<std::wstring> urls_;
  std::wstring edition_;
  int year_;
};

}  // namespace QLTypeSys
