// Vectors and matrices, checked by their algebraic properties; entries are integers where results
// must be exact.
#include "view/matrices.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using namespace view;

constexpr Matrix3 turned{{{{{0, 2, 1}}, {{-1, 3, 5}}, {{4, 0, -2}}}}};
constexpr Matrix4 mixed{{{{{1, 2, 0, -1}}, {{3, 0, 1, 2}}, {{0, -2, 5, 1}}, {{7, 1, -3, 2}}}}};
constexpr Matrix4 rigid{{{{{0, 1, 0, 0}}, {{0, 0, 1, 0}}, {{1, 0, 0, 0}}, {{320, -240, 1000, 1}}}}};

template<std::size_t N>
void expectNear(const Matrix<N>& a, const Matrix<N>& b) {
    for (std::size_t row = 0; row < N; ++row)
        for (std::size_t column = 0; column < N; ++column)
            EXPECT_NEAR(a[row][column], b[row][column], 1e-12) << row << ", " << column;
}

TEST(Matrices, HaveAnInverseOrNone) {
    expectNear(inverse(turned) * turned, Matrix3::identity());
    expectNear(mixed * inverse(mixed), Matrix4::identity());
    EXPECT_EQ(rigidInverse(rigid), inverse(rigid));
    EXPECT_EQ(rigid * rigidInverse(rigid), Matrix4::identity());

    Matrix4 singular = mixed;
    singular[1] = singular[0] * 2 + singular[3];
    EXPECT_EQ(inverse(singular), Matrix4{});
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (const double entry : {0.0, 1e-200, 1e300, infinity, std::nan("")}) {
        const Matrix3 flat{{{{{entry, 0, 0}}, {{0, entry, 0}}, {{0, 0, entry}}}}};
        EXPECT_EQ(inverse(flat), Matrix3{}) << entry;
    }
}

} // namespace
