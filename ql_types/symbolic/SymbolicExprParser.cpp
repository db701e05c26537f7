// The parser: recursive descent into a private list of nodes, entered in the table only once the whole
// text has been read, so that a failed parse leaves the table as it was.
#include "ql_types/symbolic/SymbolicExprParser.hpp"

#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"
#include "ql_types/symbolic/internal/Rebuild.hpp"

namespace QL {

namespace {

struct Node {
  explicit Node(SymbolicExprKind k) : kind(k) {}
  SymbolicExprKind kind;
  std::int64_t value = 0;  // IntValue
  std::string name;        // String
  unsigned lhs = 0, rhs = 0;
};

bool isNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

class Reader {
 public:
  explicit Reader(const char* text) : text_(text) {}

  unsigned parseAll() {
    const unsigned root = additive();
    skipSpace();
    if (text_[pos_] == ')') qlRaise(qlmsg::symbolic::SymbolicExprUnmatchedParenthesis, column(), text_);
    if (text_[pos_] != '\0') {
      refuseStrayCharacter();
      qlRaise(qlmsg::symbolic::SymbolicExprExpectedOperator, column(), text_, found());
    }
    return root;
  }

  std::vector<Node> nodes;

 private:
  unsigned additive() {
    unsigned lhs = multiplicative();
    for (;;) {
      skipSpace();
      const char c = text_[pos_];
      if (c != '+' && c != '-') return lhs;
      ++pos_;
      const unsigned rhs = multiplicative();
      lhs = binary(c == '+' ? SymbolicExprKind::Plus : SymbolicExprKind::Minus, lhs, rhs);
    }
  }

  unsigned multiplicative() {
    unsigned lhs = unary();
    for (;;) {
      skipSpace();
      const char c = text_[pos_];
      SymbolicExprKind kind;
      if (c == '*')
        kind = SymbolicExprKind::Multiply;
      else if (c == '/')
        kind = SymbolicExprKind::Divide;
      else if (c == '%')
        kind = SymbolicExprKind::Modulo;
      else
        return lhs;
      ++pos_;
      lhs = binary(kind, lhs, unary());
    }
  }

  unsigned unary() {
    skipSpace();
    if (text_[pos_] != '-') return primary();
    Deeper guard(*this);
    ++pos_;
    skipSpace();
    if (isDigit(text_[pos_])) return literal(true);
    Node n(SymbolicExprKind::UnaryMinus);
    n.lhs = unary();
    return add(std::move(n));
  }

  unsigned primary() {
    skipSpace();
    const char c = text_[pos_];
    if (isDigit(c)) return literal(false);
    if (isNameStart(c)) {
      const std::size_t start = pos_;
      while (isNameChar(text_[pos_])) ++pos_;
      Node n(SymbolicExprKind::String);
      n.name.assign(text_ + start, pos_ - start);
      return add(std::move(n));
    }
    if (c == '(') {
      Deeper guard(*this);
      const std::size_t open = column();
      ++pos_;
      const unsigned inner = additive();
      skipSpace();
      if (text_[pos_] != ')') {
        refuseStrayCharacter();
        qlRaise(qlmsg::symbolic::SymbolicExprExpectedClosingParenthesis, column(), text_, found(), open);
      }
      ++pos_;
      return inner;
    }
    refuseStrayCharacter();
    qlRaise(qlmsg::symbolic::SymbolicExprExpectedOperand, column(), text_, found());
  }

  // A character that starts no token is reported as such, whatever was expected.
  void refuseStrayCharacter() const {
    const char c = text_[pos_];
    if (c == '\0' || isNameChar(c) || std::strchr("+-*/%()", c)) return;
    qlRaise(qlmsg::symbolic::SymbolicExprInvalidCharacter, column(), text_, found());
  }

  unsigned literal(bool negative) {
    const std::size_t start = pos_;
    const std::size_t startColumn = column();
    // Accumulate up to one past INT_MAX's magnitude; a longer run of digits is out of range anyway.
    const std::int64_t limit = negative ? -static_cast<std::int64_t>(INT_MIN) : INT_MAX;
    std::int64_t v = 0;
    bool tooLarge = false;
    while (isDigit(text_[pos_])) {
      v = v * 10 + (text_[pos_++] - '0');
      if (v > limit) {
        tooLarge = true;
        v = limit;
      }
    }
    if (tooLarge) {
      std::string digits(text_ + start, pos_ - start);
      qlRaise(qlmsg::symbolic::SymbolicExprIntegerOutOfRange, startColumn, text_, (negative ? "-" : "") + digits);
    }
    Node n(SymbolicExprKind::IntValue);
    n.value = negative ? -v : v;
    return add(std::move(n));
  }

  unsigned binary(SymbolicExprKind kind, unsigned lhs, unsigned rhs) {
    Node n(kind);
    n.lhs = lhs;
    n.rhs = rhs;
    return add(std::move(n));
  }

  unsigned add(Node n) {
    nodes.push_back(std::move(n));
    return static_cast<unsigned>(nodes.size() - 1);
  }

  void skipSpace() {
    while (std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
  }

  std::size_t column() const { return pos_ + 1; }

  // What stands at the current position, for messages.
  std::string found() const {
    const unsigned char c = static_cast<unsigned char>(text_[pos_]);
    if (c == 0) return "the end of the text";
    if (std::isprint(c)) return std::string("'") + static_cast<char>(c) + "'";
    static const char* hex = "0123456789ABCDEF";
    return std::string("the byte 0x") + hex[c >> 4] + hex[c & 15];
  }

  // Counts nesting on the way down and raises past the limit.
  struct Deeper {
    explicit Deeper(Reader& r) : r_(r) {
      if (++r_.depth_ > SymbolicExprParser::kMaxDepth)
        qlRaise(qlmsg::symbolic::SymbolicExprTooDeep, r_.column(), r_.text_, SymbolicExprParser::kMaxDepth);
    }
    ~Deeper() { --r_.depth_; }
    Reader& r_;
  };

  const char* text_;
  std::size_t pos_ = 0;
  unsigned depth_ = 0;
};

}  // namespace

SymbolicExprParser::SymbolicExprParser(SymbolicExprTable& table) : table_(table) {}

unsigned SymbolicExprParser::parse(const char* text) {
  Reader reader(text ? text : "");
  const unsigned root = reader.parseAll();
  // Nodes are in post-order (operands before their operator), so one forward sweep enters them. Should
  // entering fail (out of memory), what this parse entered is taken out again.
  const unsigned before = table_.size();
  struct Undo {
    SymbolicExprTable& table;
    unsigned size;
    bool done = false;
    ~Undo() {
      if (!done) table.truncate(size);
    }
  } undo{table_, before};
  std::vector<unsigned> index(reader.nodes.size());
  for (std::size_t i = 0; i < reader.nodes.size(); ++i) {
    const Node& n = reader.nodes[i];
    switch (n.kind) {
      case SymbolicExprKind::IntValue:
        index[i] = SymbolicIntValue(table_, static_cast<int>(n.value)).getId(table_);
        break;
      case SymbolicExprKind::String:
        index[i] = SymbolicString(table_, n.name).getId(table_);
        break;
      case SymbolicExprKind::UnaryMinus:
        index[i] = SymbolicUnaryMinusExpr(table_, index[n.lhs]).getId(table_);
        break;
      default:
        index[i] = internal::enterBinary(table_, n.kind, index[n.lhs], index[n.rhs]);
        break;
    }
  }
  undo.done = true;
  return index[root];
}

}  // namespace QL
