// The expression classes of symbolic sizes.
//
// An expression object is built on a table from a value, a name or the indexes of its operands in that
// table, and getId(table) enters it there or finds the structurally equal entry. Objects built by callers
// are temporaries: the table keeps a copy of its own, which knows its index, so asking an entry for its id
// costs nothing. Operands are always indexes, never pointers, so an entry is as small as its fields and
// two entries are equal exactly when their kinds, fields and operand indexes are.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace QL {

class SymbolicExprTable;

/// What an expression is. The order of the enumerators is the first key of the canonical order.
enum class SymbolicExprKind : unsigned char {
  IntValue,
  String,
  ND,
  UnaryMinus,
  Plus,
  Minus,
  Multiply,
  Divide,
  Modulo,
  Equal,
  GreaterThan,
  LessThan,
};

/// An expression: a temporary built by a caller, or an entry owned by a table.
class SymbolicExpr {
 public:
  /// The index of an expression that is not (yet) an entry.
  static constexpr unsigned npos = ~0u;

  virtual ~SymbolicExpr();
  SymbolicExpr& operator=(const SymbolicExpr&) = delete;

  /// What the expression is.
  SymbolicExprKind getKind() const { return kind_; }

  /// The index of this expression in table, entering it if the table holds no equal entry. An expression
  /// of another table is copied over with its operands, which merge with what table holds.
  unsigned getId(SymbolicExprTable& table) const;

  /// The table whose indexes the operands are.
  const SymbolicExprTable& getTable() const { return *table_; }
  /// The index of this entry in its table, or npos for a temporary.
  unsigned getIndex() const { return index_; }

  /// The number of dimensions: 0 unless the expression is multi-dimensional.
  virtual unsigned getNumDimensions() const;
  /// The index of dimension i; raises SymbolicExprDimensionOutOfRange unless i < getNumDimensions().
  unsigned getDimension(unsigned i) const;

  /// The number of operands (0 for values and names).
  virtual unsigned getNumOperands() const;
  /// The index of operand k, left to right; k must be below getNumOperands().
  virtual unsigned getOperand(unsigned k) const;

 protected:
  SymbolicExpr(SymbolicExprKind kind, const SymbolicExprTable& table) : table_(&table), kind_(kind) {}
  SymbolicExpr(const SymbolicExpr&) = default;

  /// index, if the table holds an entry there; raises SymbolicExprInvalidIndex otherwise.
  static unsigned checkedIndex(const SymbolicExprTable& table, unsigned index);

 private:
  friend class SymbolicExprTable;

  /// A copy of this expression as the table stores it.
  virtual std::unique_ptr<SymbolicExpr> clone() const = 0;
  /// A hash of the fields beside the kind; equal fields give equal hashes.
  virtual std::size_t hashFields() const = 0;
  /// Whether the fields beside the kind equal those of other, which has the same kind.
  virtual bool sameFields(const SymbolicExpr& other) const = 0;

  const SymbolicExprTable* table_;
  unsigned index_ = npos;
  SymbolicExprKind kind_;
};

/// An integer.
class SymbolicIntValue : public SymbolicExpr {
 public:
  SymbolicIntValue(SymbolicExprTable& table, int value)
      : SymbolicExpr(SymbolicExprKind::IntValue, table), value_(value) {}
  /// Whether expr is an integer.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::IntValue; }
  /// The integer.
  int getValue() const { return value_; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
  std::size_t hashFields() const override;
  bool sameFields(const SymbolicExpr& other) const override;
  int value_;
};

/// A name, kept as written: nothing checks its form.
class SymbolicString : public SymbolicExpr {
 public:
  SymbolicString(SymbolicExprTable& table, std::string name)
      : SymbolicExpr(SymbolicExprKind::String, table), name_(std::move(name)) {}
  /// Whether expr is a name.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::String; }
  /// The name.
  const std::string& getName() const { return name_; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
  std::size_t hashFields() const override;
  bool sameFields(const SymbolicExpr& other) const override;
  std::string name_;
};

/// A multi-dimensional size: one expression index per dimension (none or one are allowed too).
class SymbolicNDExpr : public SymbolicExpr {
 public:
  SymbolicNDExpr(SymbolicExprTable& table, std::vector<unsigned> dimensions);
  /// Whether expr is multi-dimensional.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::ND; }
  /// The dimensions' indexes.
  const std::vector<unsigned>& getDimensions() const { return dims_; }
  unsigned getNumDimensions() const override;
  unsigned getNumOperands() const override;
  unsigned getOperand(unsigned k) const override;

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
  std::size_t hashFields() const override;
  bool sameFields(const SymbolicExpr& other) const override;
  std::vector<unsigned> dims_;
};

/// The negation of one operand.
class SymbolicUnaryMinusExpr : public SymbolicExpr {
 public:
  SymbolicUnaryMinusExpr(SymbolicExprTable& table, const SymbolicExpr& operand);
  SymbolicUnaryMinusExpr(SymbolicExprTable& table, unsigned operand);
  /// Whether expr is a negation.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::UnaryMinus; }
  /// The index of the negated operand.
  unsigned getArgument() const { return arg_; }
  unsigned getNumOperands() const override;
  unsigned getOperand(unsigned k) const override;

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
  std::size_t hashFields() const override;
  bool sameFields(const SymbolicExpr& other) const override;
  unsigned arg_;
};

/// The common part of the operators with two operands.
class SymbolicBinaryExpr : public SymbolicExpr {
 public:
  /// Whether expr has two operands (arithmetic or relation).
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() >= SymbolicExprKind::Plus; }
  /// The index of the left operand.
  unsigned getLHS() const { return lhs_; }
  /// The index of the right operand.
  unsigned getRHS() const { return rhs_; }
  unsigned getNumOperands() const override;
  unsigned getOperand(unsigned k) const override;

 protected:
  SymbolicBinaryExpr(SymbolicExprKind kind, SymbolicExprTable& table, const SymbolicExpr& lhs, const SymbolicExpr& rhs);
  SymbolicBinaryExpr(SymbolicExprKind kind, SymbolicExprTable& table, unsigned lhs, unsigned rhs);

 private:
  std::size_t hashFields() const override;
  bool sameFields(const SymbolicExpr& other) const override;
  unsigned lhs_;
  unsigned rhs_;
};

/// lhs + rhs.
class SymbolicPlusExpr : public SymbolicBinaryExpr {
 public:
  SymbolicPlusExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Plus, t, l, r) {}
  SymbolicPlusExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Plus, t, l, r) {}
  /// Whether expr is a sum.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Plus; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// lhs - rhs.
class SymbolicMinusExpr : public SymbolicBinaryExpr {
 public:
  SymbolicMinusExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Minus, t, l, r) {}
  SymbolicMinusExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Minus, t, l, r) {}
  /// Whether expr is a difference.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Minus; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// lhs * rhs.
class SymbolicMultiplyExpr : public SymbolicBinaryExpr {
 public:
  SymbolicMultiplyExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Multiply, t, l, r) {}
  SymbolicMultiplyExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Multiply, t, l, r) {}
  /// Whether expr is a product.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Multiply; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// lhs / rhs, integer division truncating toward zero.
class SymbolicDivideExpr : public SymbolicBinaryExpr {
 public:
  SymbolicDivideExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Divide, t, l, r) {}
  SymbolicDivideExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Divide, t, l, r) {}
  /// Whether expr is a division.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Divide; }
  /// The index of the numerator.
  unsigned getNumerator() const { return getLHS(); }
  /// The index of the denominator.
  unsigned getDenominator() const { return getRHS(); }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// lhs % rhs, the remainder of the truncating division (it takes the sign of lhs).
class SymbolicModuloExpr : public SymbolicBinaryExpr {
 public:
  SymbolicModuloExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Modulo, t, l, r) {}
  SymbolicModuloExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Modulo, t, l, r) {}
  /// Whether expr is a remainder.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Modulo; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// The relation lhs == rhs.
class SymbolicEqualExpr : public SymbolicBinaryExpr {
 public:
  SymbolicEqualExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::Equal, t, l, r) {}
  SymbolicEqualExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::Equal, t, l, r) {}
  /// Whether expr is an equality.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::Equal; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// The relation lhs > rhs.
class SymbolicGreaterThanExpr : public SymbolicBinaryExpr {
 public:
  SymbolicGreaterThanExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::GreaterThan, t, l, r) {}
  SymbolicGreaterThanExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::GreaterThan, t, l, r) {}
  /// Whether expr is a greater-than relation.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::GreaterThan; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

/// The relation lhs < rhs.
class SymbolicLessThanExpr : public SymbolicBinaryExpr {
 public:
  SymbolicLessThanExpr(SymbolicExprTable& t, const SymbolicExpr& l, const SymbolicExpr& r)
      : SymbolicBinaryExpr(SymbolicExprKind::LessThan, t, l, r) {}
  SymbolicLessThanExpr(SymbolicExprTable& t, unsigned l, unsigned r)
      : SymbolicBinaryExpr(SymbolicExprKind::LessThan, t, l, r) {}
  /// Whether expr is a less-than relation.
  static bool isa(const SymbolicExpr& expr) { return expr.getKind() == SymbolicExprKind::LessThan; }

 private:
  std::unique_ptr<SymbolicExpr> clone() const override;
};

}  // namespace QL
