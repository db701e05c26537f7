// Printing: each operand is put in parentheses when its precedence is below its operator's, or equal to
// it on the right, because every operator groups to the left.
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"

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

class Writer {
 public:
  Writer(const SymbolicExprTable& table, const SymbolicExprPrinterPredicate& predicate)
      : table_(table), predicate_(predicate) {}

  void write(const SymbolicExpr& e) {
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
        for (unsigned k = 0; k < n; ++k) {
          if (k) out += ',';
          write(table_.get(e.getOperand(k)));
        }
        out += ']';
        return;
      }
      case SymbolicExprKind::UnaryMinus: {
        const SymbolicExpr& a = table_.get(e.getOperand(0));
        out += '-';
        // "-5" reads back as the integer -5, so the negation of a plain integer keeps its parentheses.
        const bool plainInteger = SymbolicIntValue::isa(a) && static_cast<const SymbolicIntValue&>(a).getValue() >= 0;
        operand(a, plainInteger || levelOf(a) < kUnary);
        return;
      }
      default: {
        const Level level = levelOf(e);
        const SymbolicExpr& l = table_.get(e.getOperand(0));
        const SymbolicExpr& r = table_.get(e.getOperand(1));
        operand(l, levelOf(l) < level);
        out += operatorOf(e.getKind());
        operand(r, levelOf(r) <= level);
        return;
      }
    }
  }

  std::string out;

 private:
  void operand(const SymbolicExpr& e, bool parenthesise) {
    if (parenthesise) out += '(';
    write(e);
    if (parenthesise) out += ')';
  }

  const SymbolicExprTable& table_;
  const SymbolicExprPrinterPredicate& predicate_;
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
