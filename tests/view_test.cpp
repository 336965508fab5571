// Vectors and matrices, by what algebra says of them; entries are whole numbers where results must
// be exact.
#include "view/matrices.h"

#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace view;

constexpr Matrix3 turned{{{{{0, 2, 1}}, {{-1, 3, 5}}, {{4, 0, -2}}}}};
constexpr Matrix4 mixed{{{{{1, 2, 0, -1}}, {{3, 0, 1, 2}}, {{0, -2, 5, 1}}, {{7, 1, -3, 2}}}}};
constexpr Matrix4 other{{{{{2, 0, 1, 0}}, {{0, 3, -1, 4}}, {{1, 1, 0, 2}}, {{-5, 2, 6, 1}}}}};
constexpr Matrix4 rigid{{{{{0, 1, 0, 0}}, {{0, 0, 1, 0}}, {{1, 0, 0, 0}}, {{320, -240, 1000, 1}}}}};

template<std::size_t N>
void expectNear(const Matrix<N>& a, const Matrix<N>& b) {
    for (std::size_t row = 0; row < N; ++row)
        for (std::size_t column = 0; column < N; ++column)
            EXPECT_NEAR(a[row][column], b[row][column], 1e-12) << row << ", " << column;
}

TEST(Vectors, AddScaleAndHaveALength) {
    constexpr Vector3 a{{2, -3, 6}};
    constexpr Vector3 c{{1, 2, 3}};
    constexpr Vector4 b{{1, 1, 5, -3}};
    EXPECT_EQ(length(a), 7);
    EXPECT_EQ(length(b), 6);
    EXPECT_EQ(dot(a, c), 14);
    EXPECT_EQ(a + c, (Vector3{{3, -1, 9}}));
    EXPECT_EQ((b - Vector4{{1, 2, 3, 4}}), (Vector4{{0, -1, 2, -7}}));
    EXPECT_EQ(-b + b, Vector4{});
    EXPECT_EQ(normalize(a), a * (1.0 / 7));
    EXPECT_EQ(normalize(Vector4{}), Vector4{});
}

TEST(Matrices, MultiplyRowVectorsFromTheLeft) {
    constexpr Vector4 point{{2, 3, 4, 1}};
    EXPECT_EQ(point * rigid, (Vector4{{324, -238, 1003, 1}}));
    EXPECT_EQ(point * (mixed * other), point * mixed * other);
    EXPECT_EQ(transpose(mixed * other), transpose(other) * transpose(mixed));
    EXPECT_EQ(transpose(turned)[0], (Vector3{{0, -1, 4}}));
}

TEST(Matrices, HaveADeterminant) {
    EXPECT_EQ(determinant(turned), 24); // by the rule of the diagonals: 40 - 12 + 0 - 4
    EXPECT_EQ(determinant(Matrix4::identity()), 1);
    EXPECT_NE(determinant(mixed), 0);
    EXPECT_EQ(determinant(mixed * other), determinant(mixed) * determinant(other));
    EXPECT_EQ(determinant(transpose(mixed)), determinant(mixed));
    Matrix4 swapped = mixed;
    std::swap(swapped[0], swapped[2]);
    EXPECT_EQ(determinant(swapped), -determinant(mixed));
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
