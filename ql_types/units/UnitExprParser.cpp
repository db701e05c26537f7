// The unit expression grammars (Boost.Spirit Qi over code points) and their semantic actions.
//
// Both grammars are built once, on first use, and shared: a rule holds no state between parses, and
// the semantic actions write only to the attributes of the parse in progress.
#define BOOST_SPIRIT_UNICODE
#include "ql_types/units/UnitExprParser.hpp"

#include <boost/fusion/include/adapt_struct.hpp>
#include <boost/optional.hpp>
#include <boost/phoenix/core.hpp>
#include <boost/phoenix/function.hpp>
#include <boost/phoenix/operator.hpp>
#include <boost/spirit/include/qi.hpp>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "ql_types/units/internal/CodePoints.hpp"
#include "ql_types/units/internal/UnitExprGrammarCost.hpp"

namespace QLTypeSys {

namespace {

namespace qi = boost::spirit::qi;
namespace unicode = boost::spirit::unicode;
namespace phx = boost::phoenix;

using internal::CodePoints;
using Iterator = CodePoints::const_iterator;
using Skipper = unicode::space_type;

// ---------------------------------------------------------------------------------------------------------
// Semantic actions. Each returns false where a count would leave the 32-bit range, which fails the match.

// Raises every term to v; v == 0 empties the list.
bool raiseTo(UnitExprAST& ast, int v) {
  if (v == 0) {
    ast.names.clear();
    ast.exponents.clear();
    return true;
  }
  Exponent by;
  if (!Exponent::checkedFromInt(v, by)) return false;
  for (Exponent& e : ast.exponents)
    if (!Exponent::checkedMultiply(e, by, e)) return false;
  return true;
}

// Where each name of an expression's list stands. Built only once the list is long, so that a long product
// of distinct names merges in linear time; a rule local of `expression`, so the grammar keeps no state.
struct NameIndex {
  static constexpr std::size_t kFrom = 16;
  std::unordered_map<std::wstring, std::size_t> positions;
};

// Appends the right terms to the left ones, adding the exponents of a name already there.
bool mergeInto(UnitExprAST& left, const UnitExprAST& right, NameIndex* index) {
  if (index && index->positions.empty() && left.names.size() >= NameIndex::kFrom)
    for (std::size_t j = 0; j < left.names.size(); ++j) index->positions.emplace(left.names[j], j);
  const bool indexed = index && !index->positions.empty();
  for (std::size_t i = 0; i < right.names.size(); ++i) {
    std::size_t j = 0;
    if (indexed) {
      const auto found = index->positions.find(right.names[i]);
      j = found == index->positions.end() ? left.names.size() : found->second;
    } else {
      while (j < left.names.size() && left.names[j] != right.names[i]) ++j;
    }
    if (j == left.names.size()) {
      left.names.push_back(right.names[i]);
      left.exponents.push_back(right.exponents[i]);
      if (indexed) index->positions.emplace(right.names[i], j);
    } else if (!Exponent::checkedAdd(left.exponents[j], right.exponents[i], left.exponents[j])) {
      return false;
    }
  }
  return true;
}

struct NameAction {
  using result_type = void;
  void operator()(UnitExprAST& ast, const CodePoints& name) const {
    ast = UnitExprAST();
    ast.names.push_back(internal::encodeUtf16(name));
    ast.exponents.push_back(Exponent::one);
  }
};

struct RaiseAction {
  using result_type = bool;
  bool operator()(UnitExprAST& ast, int v) const { return raiseTo(ast, v); }
};

struct MultiplyAction {
  using result_type = bool;
  bool operator()(UnitExprAST& left, const UnitExprAST& right, NameIndex& index) const {
    return mergeInto(left, right, &index);
  }
};

struct DivideAction {
  using result_type = bool;
  bool operator()(UnitExprAST& left, UnitExprAST right, NameIndex& index) const {
    return raiseTo(right, -1) && mergeInto(left, right, &index);
  }
};

// The slash of "first": the number before it only starts an empty list.
struct ReciprocalAction {
  using result_type = bool;
  bool operator()(UnitExprAST& out, const UnitExprAST& denominator) const {
    UnitExprAST start = denominator;
    if (!raiseTo(start, -1)) return false;
    out = std::move(start);
    return true;
  }
};

const phx::function<NameAction> makeName;
const phx::function<RaiseAction> raise;
const phx::function<MultiplyAction> multiply;
const phx::function<DivideAction> divide;
const phx::function<ReciprocalAction> reciprocal;

// ---------------------------------------------------------------------------------------------------------
// The expression grammar.

struct UnitExprGrammar : qi::grammar<Iterator, UnitExprAST(), Skipper> {
  UnitExprGrammar() : UnitExprGrammar::base_type(whole, "expression") {
    using qi::_1;
    using qi::_a;
    using qi::_pass;
    using qi::_val;

    special = unicode::char_("@*/^()+") | unicode::char_('-');
    name = +(unicode::graph - special);
    integer = qi::int_;  // out of range does not match
    exponent = integer[_val = _1] | (qi::lit('(') >> integer[_val = _1] >> ')');
    group = qi::lit('(') >> expression[_val = _1] >> ')';
    factor = (group[_val = _1] | name[makeName(_val, _1)]) >> *(qi::lit('^') >> exponent[_pass = raise(_val, _1)]);
    // Once "exponent /" has matched, the factor alternative could only end before the slash, which no
    // caller accepts: the lookahead commits to the first alternative so that nested "(5/(5/(..." is
    // parsed once instead of twice per level.
    first = (&(exponent >> '/') >> qi::omit[exponent] >> '/' >> factor[_pass = reciprocal(_val, _1)]) |
            (!(exponent >> '/') >> factor[_val = _1]);
    expression = first[_val = _1] >> *((qi::lit('*') >> factor[_pass = multiply(_val, _1, _a)]) |
                                       (qi::lit('/') >> factor[_pass = divide(_val, _1, _a)]));
    whole = expression[_val = _1];  // the grammar's own signature, without expression's local
  }

  qi::rule<Iterator> special;
  qi::rule<Iterator, CodePoints()> name;  // no skipper: no white space inside a name
  qi::rule<Iterator, int()> integer;      // nor inside a number
  qi::rule<Iterator, int(), Skipper> exponent;
  qi::rule<Iterator, UnitExprAST(), Skipper> group, factor, first;
  qi::rule<Iterator, UnitExprAST(), qi::locals<NameIndex>, Skipper> expression;
  qi::rule<Iterator, UnitExprAST(), Skipper> whole;
};

// ---------------------------------------------------------------------------------------------------------
// The "unit@abstract" grammar.

struct AnnotatedParts {
  CodePoints unit;
  boost::optional<CodePoints> abstract;
};

}  // namespace
}  // namespace QLTypeSys

BOOST_FUSION_ADAPT_STRUCT(QLTypeSys::AnnotatedParts, unit, abstract)

namespace QLTypeSys {
namespace {

struct AnnotatedGrammar : qi::grammar<Iterator, AnnotatedParts(), Skipper> {
  AnnotatedGrammar() : AnnotatedGrammar::base_type(annotated, "annotated") {
    special = unicode::char_("@*/^()+") | unicode::char_('-');
    unitPart = +(unicode::graph - '@');
    abstractPart = +(unicode::graph - special);
    annotated = unitPart >> -(qi::lit('@') >> abstractPart);
  }

  qi::rule<Iterator> special;
  qi::rule<Iterator, CodePoints()> unitPart, abstractPart;  // no white space inside either
  qi::rule<Iterator, AnnotatedParts(), Skipper> annotated;
};

const UnitExprGrammar& expressionGrammar() {
  static const UnitExprGrammar grammar;
  return grammar;
}

const AnnotatedGrammar& annotatedGrammar() {
  static const AnnotatedGrammar grammar;
  return grammar;
}

}  // namespace

namespace {

bool parseWith(const UnitExprGrammar& grammar, const std::wstring& text, UnitExprAST& ast) {
  const CodePoints cps = internal::decodeUtf16(text);
  if (internal::maxNesting(cps) > kMaxUnitExprNesting) return false;
  UnitExprAST result;
  Iterator it = cps.begin();
  const bool matched = qi::phrase_parse(it, cps.cend(), grammar, unicode::space, result);
  if (!matched || it != cps.cend()) return false;
  ast = std::move(result);
  return true;
}

}  // namespace

bool parseUnitExpr(const std::wstring& text, UnitExprAST& ast) { return parseWith(expressionGrammar(), text, ast); }

bool internal::parseUnitExprWithFreshGrammar(const std::wstring& text, UnitExprAST& ast) {
  const UnitExprGrammar grammar;
  return parseWith(grammar, text, ast);
}

bool splitUnitExpr(const std::wstring& text, std::wstring& unitPart, std::wstring& abstractPart) {
  const CodePoints cps = internal::decodeUtf16(text);
  AnnotatedParts parts;
  Iterator it = cps.begin();
  const bool matched = qi::phrase_parse(it, cps.cend(), annotatedGrammar(), unicode::space, parts);
  unitPart = internal::encodeUtf16(parts.unit);
  abstractPart = parts.abstract ? internal::encodeUtf16(*parts.abstract) : std::wstring();
  return matched;
}

}  // namespace QLTypeSys
