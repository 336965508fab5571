// 3x3 and 4x4 matrices of doubles in the host's layout: row-major, for row vectors on the left, the
// translation in the last row. OpenGL reads the same doubles as column-major. Plain values: no
// state, no running command.
#pragma once

#include "view/vectors.h"

namespace view {

template<std::size_t N>
struct Matrix {
    std::array<Vector<N>, N> rows{}; // initially zero

    static constexpr Matrix identity() {
        Matrix result;
        for (std::size_t i = 0; i < N; ++i)
            result[i][i] = 1;
        return result;
    }

    constexpr Vector<N>& operator[](std::size_t row) { return rows[row]; }
    constexpr const Vector<N>& operator[](std::size_t row) const { return rows[row]; }
    constexpr bool operator==(const Matrix&) const = default;
};
using Matrix3 = Matrix<3>;
using Matrix4 = Matrix<4>;

template<std::size_t N>
constexpr Vector<N> operator*(const Vector<N>& a, const Matrix<N>& b) {
    Vector<N> result;
    for (std::size_t i = 0; i < N; ++i)
        result = result + b[i] * a[i];
    return result;
}

// First a, then b.
template<std::size_t N>
constexpr Matrix<N> operator*(const Matrix<N>& a, const Matrix<N>& b) {
    Matrix<N> result;
    for (std::size_t i = 0; i < N; ++i)
        result[i] = a[i] * b;
    return result;
}

template<std::size_t N>
constexpr Matrix<N> transpose(const Matrix<N>& a) {
    Matrix<N> result;
    for (std::size_t row = 0; row < N; ++row)
        for (std::size_t column = 0; column < N; ++column)
            result[column][row] = a[row][column];
    return result;
}

double determinant(const Matrix3& a);
double determinant(const Matrix4& a);

// The zero matrix if the determinant is 0 or the inverse exceeds the range of double, which avoids
// NaN later; nothing is visible through it.
Matrix3 inverse(const Matrix3& a);
Matrix4 inverse(const Matrix4& a);

// The inverse of a rotation with a translation, without division; wrong for any other matrix.
Matrix4 rigidInverse(const Matrix4& a);

} // namespace view
