// The unit catalogue package writer: reads the catalogue source text under data/, checks it, and writes
// the package file (an OPC ZIP holding the SQLite database in the part "/ud_part").
//
// Kept as a library so that tests can write small, deliberately broken packages: a catalogue can be built
// in memory and written without validation, and WriteOptions leave out parts, tables or add raw SQL.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace QLTypeSys {
namespace udwriter {

/// Where a row came from, for messages.
struct SourceLocation {
  std::string file;
  int line = 0;
};

/// A factor as stored: the integer type and its text.
struct FactorText {
  int type = 3;
  std::string text = "1,1,0";
  bool operator<(const FactorText& o) const { return type != o.type ? type < o.type : text < o.text; }
  bool operator==(const FactorText& o) const { return type == o.type && text == o.text; }
};

struct SystemRow {
  SourceLocation where;
  std::string name;
};

struct ProvenanceRow {
  SourceLocation where;
  std::string name, title, subtitle, organization, organizationFullName;
  int year = 0;
  std::string urls;  ///< comma-terminated
  std::string edition;
};

struct AbstractRow {
  SourceLocation where;
  std::string name, expression;
};

struct ReciprocalRow {
  SourceLocation where;
  std::string a, b;
  FactorText factor;
};

struct PrefixRow {
  SourceLocation where;
  std::string name, symbol, ascii, display;
  FactorText factor;
  std::vector<std::string> systems, provenances;
};

struct PrefixAliasRow {
  SourceLocation where;
  std::string name, symbol, ascii, display, prefix;
  std::vector<std::string> systems, provenances;
};

struct PrefixSetRow {
  SourceLocation where;
  std::string name;
  std::vector<std::string> prefixes;
};

struct UnitRow {
  SourceLocation where;
  std::string name, symbol, ascii, expression, display, abstractUnit, subUnit;
  FactorText factor;
  std::vector<std::string> prefixSets;  ///< names of prefix sets; the unit admits their union
  std::vector<std::string> systems, provenances;
};

struct UnitAliasRow {
  SourceLocation where;
  std::string name, symbol, ascii, display;  ///< an empty symbol or ascii is stored as NULL
  std::string target, prefix;                ///< target unit name; prefix name or empty
  std::vector<std::string> systems, provenances;
};

struct TranslationRow {
  SourceLocation where;
  std::string physmod, units;
};

/// The whole catalogue, rows in file order (which is the order of loading).
struct Catalogue {
  std::vector<SystemRow> systems;
  std::vector<ProvenanceRow> provenances;
  std::vector<AbstractRow> abstractUnits;
  std::vector<ReciprocalRow> reciprocals;
  std::vector<PrefixRow> prefixes;
  std::vector<PrefixAliasRow> prefixAliases;
  std::vector<PrefixSetRow> prefixSets;
  std::vector<UnitRow> units;
  std::vector<UnitAliasRow> aliases;
  std::vector<TranslationRow> translations;
};

/// One problem found in the source, with its place.
struct Problem {
  SourceLocation where;
  std::string message;
};

/// "file:line: message".
std::string formatProblem(const Problem& p);

/// Reads a factor as written in the source ("127/5000", "0.3048", "1e-3", "~9.80665", "affine 5/9 +
/// 45967/180", "reciprocal 1") into its stored form. Returns false and sets error if it does not read.
bool parseFactorSource(const std::string& text, FactorText& out, std::string& error);

/// Appends the rows of one source file's text to cat; syntax problems go to problems.
void readCatalogueText(const std::string& text, const std::string& fileName, Catalogue& cat,
                       std::vector<Problem>& problems);

/// Reads every *.txt file of dir in name order.
void readCatalogueDirectory(const std::string& dir, Catalogue& cat, std::vector<Problem>& problems);

/// Checks names, references, factors, expressions and dimensions; appends what is wrong.
void validateCatalogue(const Catalogue& cat, std::vector<Problem>& problems);

/// What to leave out or add when writing, for building broken packages in tests.
struct WriteOptions {
  bool contentTypes = true;    ///< "[Content_Types].xml"
  bool relationships = true;   ///< "_rels/.rels"
  bool coreProperties = true;  ///< "docProps/core.xml" and its relationship
  bool udPart = true;          ///< "ud_part"
  std::set<std::string> omitTables;
  std::string extraSql;  ///< run after the rows are written (bad rows, dangling references)
};

/// Writes the SQLite database of cat to dbPath (replacing it). Throws std::runtime_error on failure.
void writeDatabase(const Catalogue& cat, const std::string& dbPath, const WriteOptions& options = {});

/// Writes the package to path (replacing it). Throws std::runtime_error on failure.
void writePackage(const Catalogue& cat, const std::string& path, const WriteOptions& options = {});

/// Writes arbitrary bytes to path: for "not a ZIP" cases.
void writeRawFile(const std::string& path, const std::string& bytes);

}  // namespace udwriter
}  // namespace QLTypeSys
