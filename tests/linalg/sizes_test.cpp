// Matrices whose number of elements needs more than 32 bits.
#include <gtest/gtest.h>

#include "fathom.h"
#include "support/failing_malloc.hpp"

namespace fathom::test {
namespace {

constexpr int32_t kSide = 46341;  // its square is 2^31 + 4633
constexpr std::size_t kElements = std::size_t{kSide} * kSide;

TEST(Sizes, WorkspaceOfMoreThan32BitsIsAskedForAndNothingElseTouched) {
  double scalar = 0.0;
  ComplexNum complexScalar = {};
  int32_t answer = 0;
  // Matrices are null pointers: reading or writing one would end the test.
  const double* a = nullptr;
  double* y = nullptr;
  const ComplexNum* z = nullptr;
  ComplexNum* w = nullptr;
  const auto expect = [&](const char* name, std::size_t elementSize, auto&& call) {
    const FailingMalloc malloc(0, kElements);
    EXPECT_EQ(call(), FATHOM_ERR_MEMORY) << name;
    EXPECT_GE(malloc.largestRequest(), kElements * elementSize) << name;
  };
  const int32_t n = kSide;
  // Cholesky packs the triangle.
  constexpr std::size_t kReal = sizeof(double);
  constexpr std::size_t kComplex = sizeof(ComplexNum);
  expect("Determinant", kReal, [&] { return Determinant(a, n, &scalar); });
  expect("LinEqs", kReal, [&] { return LinEqs(a, a, n, y); });
  expect("GenLinEqs", kReal, [&] { return GenLinEqs(a, n, n, a, 0, y); });
  expect("GenInvMatrix", kReal, [&] { return GenInvMatrix(a, n, 0, y); });
  expect("Cholesky", kReal / 2, [&] { return Cholesky(a, n, y); });
  expect("CheckPosDef", kReal / 2, [&] { return CheckPosDef(a, n, &answer); });
  expect("MatrixRank", kReal, [&] { return MatrixRank(a, n, n, -1.0, &answer); });
  expect("SymEigenValueVector", kReal, [&] { return SymEigenValueVector(a, n, 1, y, y); });
  expect("GenEigenValueVector", kReal, [&] { return GenEigenValueVector(a, n, 1, w, w); });
  expect("CxDeterminant", kComplex, [&] { return CxDeterminant(z, n, 0, &complexScalar); });
  expect("CxGenInvMatrix", kComplex, [&] { return CxGenInvMatrix(z, n, 0, w); });
  expect("CxEigenValueVector", kComplex, [&] { return CxEigenValueVector(z, n, 1, w, w); });
}

}  // namespace
}  // namespace fathom::test
