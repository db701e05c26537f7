// Symbolic dimension values: arithmetic, dimensions, sizes and text forms.
#include <gtest/gtest.h>

#include <boost/optional/optional_io.hpp>
#include <sstream>
#include <stdexcept>

#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/symbolic/SymbolicExpr.hpp"

using namespace QLTypeSys;

namespace {

class DimsValues : public ::testing::Test {
 protected:
  SymbolicDimsTable t;
  SymbolicDims N{SymbolicDimsString(t, "N")};
  SymbolicDims M{SymbolicDimsString(t, "M")};
  SymbolicDims three{SymbolicDimsIntValue(t, 3)};
  SymbolicDims nd{SymbolicDimsND(t, {N.getId(), three.getId(), M.getId()})};
};

TEST_F(DimsValues, IntegerArithmeticFoldsToTheRegisteredInteger) {
  const SymbolicDims sum = SymbolicDimsIntValue(t, 2) + three;
  EXPECT_EQ(sum.getId(), t.registerSymbolicDims(5));
  EXPECT_EQ(t.getValueOf(sum.getId()), 5);
  EXPECT_EQ((three * SymbolicDimsIntValue(t, 4)).getId(), t.registerSymbolicDims(12));
  EXPECT_EQ((SymbolicDimsIntValue(t, 7) % three).getId(), t.registerSymbolicDims(1));
  EXPECT_EQ((SymbolicDimsIntValue(t, 6) / three).getId(), t.registerSymbolicDims(2));
  EXPECT_FALSE(t.getValueOf((SymbolicDimsIntValue(t, 7) / three).getId()));  // only exact divisions fold
  EXPECT_EQ((three - three).getId(), t.registerSymbolicDims(0));
}

TEST_F(DimsValues, TwoOperandFormsAreSimplified) {
  EXPECT_EQ((SymbolicDimsIntValue(t, 2) * N).toString(), "N*2");
  EXPECT_EQ((N + M).getId(), (M + N).getId());
  EXPECT_EQ((N * three / three).getId(), N.getId());
}

TEST_F(DimsValues, UnaryMinusIsKeptAsWrittenNotFolded) {
  // Why: negation builds its entry unsimplified, unlike the two-operand forms; the negation of 3 is not -3.
  const SymbolicDims neg = -three;
  EXPECT_NE(neg.getId(), t.registerSymbolicDims(-3));
  EXPECT_FALSE(t.getValueOf(neg.getId()));
  EXPECT_EQ(neg.toString(), "-(3)");
  EXPECT_EQ((-(-N)).toString(), "--N");  // not folded back to N
}

TEST_F(DimsValues, TheRightOperandIsReadInTheLeftOperandsTable) {
  SymbolicDimsTable other;
  const SymbolicDims foreign(other, M.getId());  // an id of other, read in t
  EXPECT_EQ((N + foreign).getId(), (N + M).getId());
}

TEST_F(DimsValues, HandlesCompareByIdAloneAcrossTables) {
  SymbolicDimsTable other;
  EXPECT_EQ(SymbolicDims(t, 1), SymbolicDims(other, 1));
  EXPECT_NE(SymbolicDims(t, 1), SymbolicDims(t, 2));
  EXPECT_EQ(SymbolicDimsND(&t, {N.getId(), three.getId(), M.getId()}), nd);  // the pointer forms act alike
}

TEST_F(DimsValues, DimensionsOfMultiDimensionalSizes) {
  EXPECT_EQ(nd.getNumDimensions(), 3u);
  EXPECT_EQ(nd.getDimension(0), N);
  EXPECT_EQ(nd.getDimension(2), M);
  EXPECT_EQ(nd.toString(), "[N,3,M]");
  EXPECT_EQ(N.getNumDimensions(), 0u);
  EXPECT_EQ(N.getDimension(5), N);  // a plain size is its own every dimension
  EXPECT_THROW(nd.getDimension(3), fl::except::IException);
}

TEST_F(DimsValues, SizesOfMultiDimensionalSizes) {
  EXPECT_EQ(nd.getSize().toString(), "M*N*3");
  EXPECT_EQ(nd.getSize(2).getId(), (N * three).getId());
  EXPECT_EQ(nd.getSize(1), N);  // the first dimension, simplified
  EXPECT_EQ(nd.getSize(0), N);  // also for 0: dimension 0 is where the product starts
  EXPECT_EQ(N.getSize(), N);
  EXPECT_EQ(N.getSize(4), N);
  EXPECT_THROW(nd.getSize(4), fl::except::IException);
}

TEST_F(DimsValues, OneDimensionalSizeIsItsOwnSizeUnsimplified) {
  const SymbolicDims one = SymbolicDimsND(t, {three.getId()});
  EXPECT_EQ(one.getNumDimensions(), 1u);
  EXPECT_EQ(one.getSize(), one);     // the entry itself, not the integer
  EXPECT_EQ(one.getSize(1), three);  // the counted form simplifies
  const SymbolicDims none = SymbolicDimsND(t, {});
  EXPECT_EQ(none.getNumDimensions(), 0u);
  EXPECT_EQ(none.getSize(), none);
  EXPECT_EQ(none.toString(), "[]");
}

TEST_F(DimsValues, TextForms) {
  SymbolicDims inherit(t, -1);
  SymbolicDims nosym(t, 0);
  EXPECT_EQ(inherit.toString(), "INHERIT");
  EXPECT_EQ(nosym.toString(), "NOSYMBOLIC");
  EXPECT_EQ(inherit.getExprWithEmptyInherit(), "");
  EXPECT_EQ(nosym.getExprWithEmptyInherit(), "");
  EXPECT_EQ(N.getExprWithEmptyInherit(), "N");
  EXPECT_EQ((N + three).getExpr(), "N+3");
  std::ostringstream os;
  (N * M).print(os);
  EXPECT_EQ(os.str(), "SymbolicDims : 'M*N'\n");
}

TEST_F(DimsValues, BadIdsAndNoTableRaiseInsteadOfCrashing) {
  const SymbolicDims bad(t, 1000);
  EXPECT_THROW(bad.toString(), fl::except::IException);
  EXPECT_THROW(N + bad, fl::except::IException);
  EXPECT_THROW(SymbolicDims(t, -7).getSize(), fl::except::IException);
  EXPECT_THROW(SymbolicDimsND(t, {N.getId(), 1000}), fl::except::IException);
  SymbolicDimsTable* none = nullptr;
  EXPECT_THROW(SymbolicDims(none, 1).toString(), std::invalid_argument);
  EXPECT_THROW(SymbolicDimsIntValue(none, 1), std::invalid_argument);
  EXPECT_EQ(SymbolicDims(none, 1).getId(), 1);
}

}  // namespace
