// Printing: each operand is put in parentheses when its precedence is below its operator's, or equal to
// it on the right, because every operator groups to the left.
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

namespace QL {

SymbolicExprPrinterPredicate::~SymbolicExprPrinterPredicate() = default;

std::string SymbolicExprPrinterPredicate::name(const std::string& name) const { return name; }

const SymbolicExprPrinter::Predicate& SymbolicExprPrinter::Predicate::instance() {
  static const Predicate predicate;
  return predicate;
}

namespace {

// Precedence levels, C's order.
enum Level { kEquality = 1, kRelational, kAdditive, kMultiplicative, kUnary, kPrimary };

Level levelOf(const SymbolicExpr& e) {
  switch (e.getKind()) {
    case SymbolicExprKind::IntValue:
      return static_cast<const SymbolicIntValue&>(e).getValue() < 0 ? kUnary : kPrimary;
    case SymbolicExprKind::String:
    case SymbolicExprKind::ND:
      return kPrimary;
    case SymbolicExprKind::UnaryMinus:
      return kUnary;
    case SymbolicExprKind::Plus:
    case SymbolicExprKind::Minus:
      return kAdditive;
    case SymbolicExprKind::Multiply:
    case SymbolicExprKind::Divide:
    case SymbolicExprKind::Modulo:
      return kMultiplicative;
    case SymbolicExprKind::GreaterThan:
    case SymbolicExprKind::LessThan:
      return kRelational;
    case SymbolicExprKind::Equal:
      break;
  }
  return kEquality;
}

const char* operatorOf(SymbolicExprKind kind) {
  switch (kind) {
    case SymbolicExprKind::Plus:
      return "+";
    case SymbolicExprKind::Minus:
      return "-";
    case SymbolicExprKind::Multiply:
      return "*";
    case SymbolicExprKind::Divide:
      return "/";
    case SymbolicExprKind::Modulo:
      return "%";
    case SymbolicExprKind::Equal:
      return "==";
    case SymbolicExprKind::GreaterThan:
      return ">";
    case SymbolicExprKind::LessThan:
      return "<";
    default:
      return "?";
  }
}

// Writes with an explicit stack of pending pieces, so a long sum (a deep left operand) costs no call
// depth. A piece is an expression to write or a fixed text.
class Writer {
 public:
  Writer(const SymbolicExprTable& table, const SymbolicExprPrinterPredicate& predicate)
      : table_(table), predicate_(predicate) {}

  void write(const SymbolicExpr& root) {
    pending_.push_back(Piece{&root, nullptr});
    while (!pending_.empty()) {
      const Piece p = pending_.back();
      pending_.pop_back();
      if (p.text)
        out += p.text;
      else
        writeOne(*p.expr);
      // An expression that shares its parts can print far longer than it is big. A long text is measured
      // once in full, which costs the number of entries, so a text past the bound is refused early.
      if (out.size() > kMeasureAfter && !measured_) {
        measured_ = true;
        if (length(root) > SymbolicExprPrinter::kMaxTextLength) tooLong();
      }
      if (out.size() > SymbolicExprPrinter::kMaxTextLength) tooLong();  // not reached after measuring
    }
  }

  std::string out;

 private:
  struct Piece {
    const SymbolicExpr* expr;
    const char* text;
  };

  // Writes what e begins with and schedules the rest; pieces go on the stack in reverse order.
  void writeOne(const SymbolicExpr& e) {
    switch (e.getKind()) {
      case SymbolicExprKind::IntValue:
        out += std::to_string(static_cast<const SymbolicIntValue&>(e).getValue());
        return;
      case SymbolicExprKind::String:
        out += predicate_.name(static_cast<const SymbolicString&>(e).getName());
        return;
      case SymbolicExprKind::ND: {
        out += '[';
        const unsigned n = e.getNumOperands();
        pending_.push_back(Piece{nullptr, "]"});
        for (unsigned k = n; k-- > 0;) {
          pending_.push_back(Piece{&table_.get(e.getOperand(k)), nullptr});
          if (k) pending_.push_back(Piece{nullptr, ","});
        }
        return;
      }
      case SymbolicExprKind::UnaryMinus: {
        const SymbolicExpr& a = table_.get(e.getOperand(0));
        out += '-';
        // "-5" reads back as the integer -5, so the negation of a plain integer keeps its parentheses.
        const bool plainInteger = SymbolicIntValue::isa(a) && static_cast<const SymbolicIntValue&>(a).getValue() >= 0;
        next(a, plainInteger || levelOf(a) < kUnary);
        return;
      }
      default: {
        const Level level = levelOf(e);
        const SymbolicExpr& l = table_.get(e.getOperand(0));
        const SymbolicExpr& r = table_.get(e.getOperand(1));
        operand(r, levelOf(r) <= level);
        pending_.push_back(Piece{nullptr, operatorOf(e.getKind())});
        next(l, levelOf(l) < level);
        return;
      }
    }
  }

  static constexpr std::size_t kMeasureAfter = std::size_t{1} << 20;

  [[noreturn]] static void tooLong() {
    qlRaise(qlmsg::symbolic::SymbolicExprTextTooLong, SymbolicExprPrinter::kMaxTextLength);
  }

  // The length of the text of root, up to the bound plus one. Operands have lower indexes than their
  // users, so entries in ascending order have their operands measured first.
  std::size_t length(const SymbolicExpr& root) const {
    if (root.getIndex() == SymbolicExpr::npos) return 0;  // a temporary: the running check still holds
    std::vector<unsigned> nodes;
    std::unordered_set<unsigned> seen{root.getIndex()};
    std::vector<unsigned> stack{root.getIndex()};
    while (!stack.empty()) {
      const unsigned i = stack.back();
      stack.pop_back();
      nodes.push_back(i);
      const SymbolicExpr& e = table_.get(i);
      for (unsigned k = 0, n = e.getNumOperands(); k < n; ++k)
        if (seen.insert(e.getOperand(k)).second) stack.push_back(e.getOperand(k));
    }
    std::sort(nodes.begin(), nodes.end());
    const std::size_t cap = SymbolicExprPrinter::kMaxTextLength + 1;
    std::unordered_map<unsigned, std::size_t> len;
    auto add = [cap](std::size_t a, std::size_t b) { return a + b < cap ? a + b : cap; };
    auto of = [&](const SymbolicExpr& a, bool parens) { return add(len.at(a.getIndex()), parens ? 2 : 0); };
    for (const unsigned i : nodes) {
      const SymbolicExpr& e = table_.get(i);
      std::size_t n = 0;
      switch (e.getKind()) {
        case SymbolicExprKind::IntValue:
          n = std::to_string(static_cast<const SymbolicIntValue&>(e).getValue()).size();
          break;
        case SymbolicExprKind::String:
          n = predicate_.name(static_cast<const SymbolicString&>(e).getName()).size();
          break;
        case SymbolicExprKind::ND:
          n = 2 + (e.getNumOperands() ? e.getNumOperands() - 1 : 0);
          for (unsigned k = 0; k < e.getNumOperands(); ++k) n = add(n, len.at(e.getOperand(k)));
          break;
        case SymbolicExprKind::UnaryMinus: {
          const SymbolicExpr& a = table_.get(e.getOperand(0));
          const bool plainInteger = SymbolicIntValue::isa(a) && static_cast<const SymbolicIntValue&>(a).getValue() >= 0;
          n = add(1, of(a, plainInteger || levelOf(a) < kUnary));
          break;
        }
        default: {
          const Level level = levelOf(e);
          const SymbolicExpr& l = table_.get(e.getOperand(0));
          const SymbolicExpr& r = table_.get(e.getOperand(1));
          n = add(add(of(l, levelOf(l) < level), std::strlen(operatorOf(e.getKind()))), of(r, levelOf(r) <= level));
          break;
        }
      }
      len[i] = n;
    }
    return len.at(root.getIndex());
  }

  // The operand written next: a bare name or integer goes straight out, anything else on the stack.
  void next(const SymbolicExpr& e, bool parenthesise) {
    const SymbolicExprKind kind = e.getKind();
    if (!parenthesise && (kind == SymbolicExprKind::IntValue || kind == SymbolicExprKind::String))
      writeOne(e);
    else
      operand(e, parenthesise);
  }

  void operand(const SymbolicExpr& e, bool parenthesise) {
    if (parenthesise) pending_.push_back(Piece{nullptr, ")"});
    pending_.push_back(Piece{&e, nullptr});
    if (parenthesise) pending_.push_back(Piece{nullptr, "("});
  }

  const SymbolicExprTable& table_;
  const SymbolicExprPrinterPredicate& predicate_;
  std::vector<Piece> pending_;
  bool measured_ = false;
};

}  // namespace

std::string SymbolicExprPrinter::operator()(const SymbolicExpr& expr,
                                            const SymbolicExprPrinterPredicate& predicate) const {
  Writer w(expr.getTable(), predicate);
  w.write(expr);
  return std::move(w.out);
}

std::string SymbolicExprPrinter::operator()(const SymbolicExprTable& table, unsigned index,
                                            const SymbolicExprPrinterPredicate& predicate) const {
  return (*this)(table.get(index), predicate);
}

}  // namespace QL
