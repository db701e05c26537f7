// UnitDatabase::loadUnitDatabase: reads the unit database package into the catalogue.
//
// The package is an OPC ZIP whose part "/ud_part" holds an SQLite database; the part is copied to a file
// in the private temporary directory and read there in eleven stages. Nothing here throws for a bad or
// incomplete file: what is wrong becomes one chain of warnings and what could be loaded stays loaded.
#include <fstream>
#include <memory>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/Text.hpp"
#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/unitdb/internal/PackageServices.hpp"
#include "ql_types/units/AbstractUnit.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/PhysModUnitsObserver.hpp"
#include "ql_types/units/UnitFactory.hpp"

namespace QLTypeSys {

namespace {

using Statement = sqldb::SqlDatabaseInterface::PreparedStatement;

// The chain of diagnostics of one load and the error flag of the running stage.
struct LoadReport {
  std::wstring path;
  qlsvDiagnostic chain;
  bool stageError = false;

  void append(qlsvDiagnostic next) { chain = qlsvConcatenateDiagnostics(std::move(chain), std::move(next), false); }
  void fieldError(const std::wstring& label) {
    append(qlMakeDiagnostic(qlmsg::unit::UnitDatabaseFileLoadFieldError, path, label));
  }
  void rowFailed(const fl::except::IUserException& e) {
    append(qlsvCreateDiagnosticFromIException(e, true));
    stageError = true;
  }
};

std::wstring text(Statement& s, int column) {
  std::wstring value;
  s.getResultColumnValue(column, value, false);
  return value;
}

int integer(Statement& s, int column) {
  int value = 0;
  s.getResultColumnValue(column, value, false);
  return value;
}

// Column 0 of every row of a per-row query given one group number, in fetch order.
std::vector<std::wstring> names(Statement& s, int group) {
  s.setInputParamValue(0, group, false);
  s.execute(false);
  std::vector<std::wstring> out;
  while (s.fetchResultRow(false)) out.push_back(text(s, 0));
  return out;
}

ConversionFactor factor(const std::wstring& textValue, int type) {
  return ConversionFactorFactory::createConversionFactor(textValue, static_cast<ConversionFactorType>(type));
}

// Runs one stage: body prepares its statements and reads its rows. A service failure ends the stage
// with the flag set; the field error for the label follows when the flag is set.
template <class Body>
void runStage(LoadReport& report, const wchar_t* label, Body&& body) {
  report.stageError = false;
  try {
    body();
  } catch (const fl::except::IMsgIDException&) {
    report.stageError = true;
  }
  if (report.stageError) report.fieldError(label);
}

}  // namespace

void UnitDatabase::loadUnitDatabase(const std::wstring& pathArgument) {
  const std::wstring path = pathArgument;
  if (!fl::filesystem::exists(path)) {
    qlsvReportAsWarning(qlMakeDiagnostic(qlmsg::unit::UnitDatabaseFileOpenError, path));
    return;
  }
  // kept: one fixed name, shared by every load of every process using the same temporary directory.
  const std::wstring tempPath = fl::filesystem::temp_directory_name() + L"/e_ud";
  const std::wstring contentType = L"application/vnd.tarnwell.norvex.data-export";  // kept: not checked
  (void)contentType;
  {
    std::ofstream out(ConvertUStringToStdString(tempPath), std::ios::out | std::ios::binary | std::ios::trunc);
    try {
      opc::zippackage::ZipPhysicalPackage physical(path, true, L"");
      opc::model::Package package(physical, true);
      opc::twservices::CorePropertiesManager properties(package);
      package.open(0);
      properties.getCoreProperties();  // read and dropped: a package without them is refused here
      package.close(false);
      package.open(2);
      auto part = package.getPart(opc::model::PartName(L"/ud_part"));
      opc::StreamHelper::copyStreamToStream(part->getInputStream(), out);
      out.close();
      package.close(false);
    } catch (const opc::Exception&) {
      // kept: names the temporary path and leaves the file behind.
      qlsvReportAsWarning(qlMakeDiagnostic(qlmsg::unit::UnitDatabaseFileOpenError, tempPath));
      return;
    }
  }

  struct RemoveAtEnd {
    std::wstring file;
    ~RemoveAtEnd() { fl::filesystem::remove(file); }
  } removeAtEnd{tempPath};
  sqldb::SqlDatabaseInterface database;
  try {
    database.connect(ConvertUStringToStdString(tempPath), false, 0);
  } catch (const fl::except::IMsgIDException&) {
    qlsvReportAsWarning(qlMakeDiagnostic(qlmsg::unit::UnitDatabaseFileOpenError, tempPath));
    return;
  }

  LoadReport report{path, nullptr, false};

  // Stage 1: no per-row catch, and the field error comes from the catch alone.
  report.stageError = false;
  try {
    Statement s;
    s.prepare("SELECT Name FROM unit_systems ORDER BY Id", database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      auto system = std::make_unique<UnitSystem>(text(s, 0));
      unitSystems_.push_back(system.get());
      system.release();
    }
  } catch (const fl::except::IMsgIDException&) {
    report.fieldError(L"unitSystems");
  }

  runStage(report, L"abstractUnits", [&] {
    Statement s;
    s.prepare("SELECT Name, Expression FROM abstract_units ORDER BY Id", database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring name = text(s, 0);
      const std::wstring expression = text(s, 1);
      std::unique_ptr<AbstractUnit> unit = UnitFactory::createAbstractUnit(0, name, expression, name, name, name);
      try {
        unit->parseExpressionAndGenerateAST();
        unit->checkValidity(false, NetExponents);
        addUnit(*unit);
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  // Stage 3: no per-row catch.
  runStage(report, L"reciprocalAbstractUnits", [&] {
    Statement s;
    s.prepare(
        "SELECT a.Name, b.Name, c.FactorType, c.ConversionFactorStr FROM abstract_unit_relations r INNER JOIN "
        "abstract_units a ON a.Id = r.AbstractUnitA INNER JOIN abstract_units b ON b.Id = r.AbstractUnitB INNER "
        "JOIN conversion_factors c ON c.Id = r.ConversionFactor ORDER BY r.Id",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring nameA = text(s, 0);
      const std::wstring nameB = text(s, 1);
      const UnitBase::UnitSet a = getAbstractUnit(nameA);
      const UnitBase::UnitSet b = getAbstractUnit(nameB);
      bool missing = false;
      for (const auto* side : {&a, &b}) {
        if (side->empty()) {
          report.fieldError(L"reciprocalAbstractUnits");
          report.append(qlMakeDiagnostic(qlmsg::unit::UnitNotInDatabase, side == &a ? nameA : nameB));
          missing = true;
        }
      }
      if (missing) continue;
      const ConversionFactor f = factor(text(s, 3), integer(s, 2));
      addReciprocalAbstractUnits(a.begin()->get(), b.begin()->get(), f);
    }
  });

  runStage(report, L"unitPrefixes", [&] {
    Statement s, systems, provenances;
    s.prepare(
        "SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Display, a.UnitSystemGroup, a.ProvenanceGroup, b.FactorType, "
        "b.ConversionFactorStr FROM unit_prefixes a INNER JOIN conversion_factors b ON a.ConversionFactor=b.Id "
        "ORDER BY a.Id",
        database, false);
    systems.prepare(
        "SELECT b.Name FROM unit_system_groups_to_unit_systems a INNER JOIN unit_systems b ON b.Id = "
        "a.unit_systems_id WHERE a.unit_system_groups_id = ?",
        database, false);
    provenances.prepare(
        "SELECT b.Name FROM provenance_groups_to_provenances a INNER JOIN provenances b ON b.Id = a.provenances_id "
        "WHERE a.provenance_groups_id = ?",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::vector<std::wstring> systemNames = names(systems, integer(s, 4));
      names(provenances, integer(s, 5));  // kept: a prefix carries no provenance
      const ConversionFactor f = factor(text(s, 7), integer(s, 6));
      std::unique_ptr<UnitPrefix> prefix =
          UnitFactory::createUnitPrefix(text(s, 0), text(s, 1), text(s, 2), text(s, 3), f, systemNames);
      try {
        prefix->checkValidity();
        addUnitPrefix(*prefix);
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  runStage(report, L"unitPrefixesAliases", [&] {
    Statement s, systems, provenances;
    s.prepare(
        "SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Display, b.Name AS UnitPrefix, a.UnitSystemGroup, "
        "a.ProvenanceGroup FROM prefix_aliases a INNER JOIN unit_prefixes b ON b.Id = a.UnitPrefix ORDER BY a.Id",
        database, false);
    systems.prepare(
        "SELECT a.Name FROM unit_systems a INNER JOIN unit_system_groups_to_unit_systems b ON b.unit_systems_id = "
        "a.Id WHERE b.unit_system_groups_id = ?",
        database, false);
    provenances.prepare(
        "SELECT a.Name FROM provenances a INNER JOIN provenance_groups_to_provenances b ON a.Id = b.provenances_id "
        "WHERE b.provenance_groups_id = ?",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring target = text(s, 4);
      const UnitPrefix::PrefixSet found = getUnitPrefix(target);
      if (found.empty()) {
        report.fieldError(L"unitPrefixAliases");  // kept: differs from the stage's own label
        report.append(qlMakeDiagnostic(qlmsg::unit::UnitPrefixNotInDatabase, target));
        continue;
      }
      const std::vector<std::wstring> systemNames = names(systems, integer(s, 5));
      names(provenances, integer(s, 6));  // kept: a prefix alias carries no provenance
      std::unique_ptr<UnitPrefixAlias> alias = UnitFactory::createUnitPrefixAlias(
          text(s, 0), text(s, 1), text(s, 2), text(s, 3), found.begin()->get(), systemNames);
      try {
        alias->checkValidity();
        addUnitPrefix(*alias);
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  runStage(report, L"units", [&] {
    Statement s, systems, prefixGroup;
    s.prepare(
        "SELECT a.Name, a.Symbol, a.AsciiSymbol, a.Expression, a.Display, b.Name, a.SubUnit, a.UnitSystemGroup, "
        "a.PrefixGroup, c.FactorType, c.ConversionFactorStr FROM units a INNER JOIN abstract_units b ON "
        "a.AbstractUnit = b.Id INNER JOIN conversion_factors c ON a.ConversionFactor = c.Id ORDER BY a.Id",
        database, false);
    systems.prepare(
        "SELECT unit_systems.Name FROM unit_system_groups INNER JOIN unit_system_groups_to_unit_systems ON "
        "unit_system_groups.Id = unit_system_groups_to_unit_systems.unit_system_groups_id INNER JOIN unit_systems "
        "ON unit_systems.Id = unit_system_groups_to_unit_systems.unit_systems_id WHERE unit_system_groups.Id = ?",
        database, false);
    prefixGroup.prepare(
        "SELECT unit_prefixes.Name FROM prefix_groups INNER JOIN prefix_groups_to_prefixes ON prefix_groups.Id = "
        "prefix_groups_to_prefixes.prefix_groups_id INNER JOIN unit_prefixes ON unit_prefixes.Id = "
        "prefix_groups_to_prefixes.unit_prefixes_id WHERE prefix_groups.Id = ?",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring name = text(s, 0), symbol = text(s, 1), ascii = text(s, 2), expression = text(s, 3),
                         display = text(s, 4), abstractName = text(s, 5), subUnit = text(s, 6);
      const int systemGroup = integer(s, 7), prefixGroupId = integer(s, 8), factorType = integer(s, 9);
      const std::wstring factorText = text(s, 10);
      const std::vector<std::wstring> systemNames = names(systems, systemGroup);
      const std::vector<std::wstring> prefixNames = names(prefixGroup, prefixGroupId);
      std::vector<std::reference_wrapper<const UnitPrefix>> prefixes;
      for (const std::wstring& prefixName : prefixNames) {
        const UnitPrefix::PrefixSet found = getUnitPrefix(prefixName);
        if (found.empty()) {
          report.fieldError(L"units");
          report.append(qlMakeDiagnostic(qlmsg::unit::UnitPrefixNotInDatabase, prefixName));
          continue;
        }
        prefixes.push_back(*found.begin());
      }
      const UnitBase::UnitSet abstractUnits = getAbstractUnit(abstractName);
      if (abstractUnits.empty()) {
        report.fieldError(L"units");
        report.append(qlMakeDiagnostic(qlmsg::unit::UnitNotInDatabase, abstractName));
        continue;
      }
      const ConversionFactor f = factor(factorText, factorType);
      std::unique_ptr<Unit> unit = UnitFactory::createUnit(-10, name, expression, symbol, ascii, display, f, subUnit,
                                                           systemNames, prefixes, false, abstractUnits.begin()->get());
      try {
        unit->parseExpressionAndGenerateAST();
        unit->checkValidity(false, NetExponents);
        addWhitelistedUnits(*unit);  // kept: before addUnit, so a refused unit still counts
        addUnit(*unit);
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  runStage(report, L"unitAliases", [&] {
    Statement s, systems;
    s.prepare(
        "SELECT a.Name, a.Symbol, a.AsciiSymbol, IFNULL(c.Symbol, '') || b.Symbol, a.Display, a.UnitSystemGroup "
        "FROM unit_aliases a INNER JOIN units b ON a.RefUnit=b.Id LEFT OUTER JOIN unit_prefixes c ON "
        "a.RefPrefix=c.Id ORDER BY a.Id",
        database, false);
    systems.prepare(
        "SELECT b.Name FROM unit_system_groups_to_unit_systems a INNER JOIN unit_systems b ON b.Id = "
        "a.unit_systems_id WHERE a.unit_system_groups_id = ?",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring target = text(s, 3);
      const UnitBase::UnitSet found = getUnit(target);
      const Unit* unit = found.empty() ? nullptr : dynamic_cast<const Unit*>(&found.begin()->get());
      if (!unit) {
        report.fieldError(L"unitAliases");
        report.append(qlMakeDiagnostic(qlmsg::unit::UnitNotInDatabase, target));
        continue;
      }
      const std::vector<std::wstring> systemNames = names(systems, integer(s, 5));
      std::unique_ptr<UnitAlias> alias =
          UnitFactory::createUnitAlias(text(s, 0), text(s, 1), text(s, 2), text(s, 4), *unit, systemNames);
      try {
        addUnit(*alias);
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  runStage(report, L"Unit Provenance", [&] {
    Statement s;
    s.prepare(
        "SELECT Name, Title, Subtitle, Organization, OrganizationFullName, Year, URLs, Edition FROM provenances "
        "ORDER BY Id",
        database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      const std::wstring urls = text(s, 6);
      // kept: only comma-terminated links count; text after the last comma is dropped.
      std::vector<std::wstring> links;
      for (std::size_t from = 0;;) {
        const std::size_t comma = urls.find(L',', from);
        if (comma == std::wstring::npos) break;
        links.push_back(urls.substr(from, comma - from));
        from = comma + 1;
      }
      UnitProvenance provenance(text(s, 0), text(s, 1), text(s, 2), text(s, 3), text(s, 4), std::move(links),
                                text(s, 7), integer(s, 5));
      try {
        addUnitProvenance(std::move(provenance));
      } catch (const fl::except::IUserException& e) {
        report.rowFailed(e);
      }
    }
  });

  const auto mappingStage = [&](const wchar_t* label, const char* sql) {
    runStage(report, label, [&] {
      Statement s;
      s.prepare(sql, database, false);
      s.execute(false);
      while (s.fetchResultRow(false)) {
        const std::wstring symbol = text(s, 0);
        const std::wstring provenance = text(s, 1);
        try {
          addUnitProvenanceMapping(symbol, provenance);
        } catch (const fl::except::IUserException& e) {
          report.rowFailed(e);
        }
      }
    });
  };
  mappingStage(L"Unit Provenance Mapping",
               "SELECT a.Symbol, c.Name FROM units a INNER JOIN provenance_groups_to_provenances b ON "
               "a.ProvenanceGroup = b.provenance_groups_id INNER JOIN provenances c ON c.Id = b.provenances_id");
  mappingStage(L"Unit Alias Provenance Mapping",
               "SELECT COALESCE(c.Symbol, c.AsciiSymbol, c.Name) AS AliasName, a.Name AS ProvenanceName FROM "
               "provenances a INNER JOIN provenance_groups_to_provenances b ON a.Id = b.provenances_id INNER JOIN "
               "unit_aliases c ON c.ProvenanceGroup = b.provenance_groups_id");

  // Stage 11: no per-row catch.
  runStage(report, L"physmodToUnitsTranslation", [&] {
    Statement s;
    s.prepare("SELECT physmod_symbol, units_symbol FROM physmod_to_units_translation ORDER BY Id", database, false);
    s.execute(false);
    while (s.fetchResultRow(false)) {
      PhysModUnitsObserver::getObserver().addTranslation(text(s, 0), text(s, 1));
    }
  });

  if (report.chain) qlsvReportAsWarning(std::move(report.chain));
}

}  // namespace QLTypeSys
