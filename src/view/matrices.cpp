#include "view/matrices.h"

namespace view {

namespace {

// The minor: the matrix without one row and one column.
template<std::size_t N>
Matrix<N - 1> minorOf(const Matrix<N>& a, std::size_t row, std::size_t column) {
    Matrix<N - 1> result;
    for (std::size_t i = 0; i < N - 1; ++i)
        for (std::size_t k = 0; k < N - 1; ++k)
            result[i][k] = a[i < row ? i : i + 1][k < column ? k : k + 1];
    return result;
}

template<std::size_t N>
double determinantOf(const Matrix<N>& a);

template<std::size_t N>
double cofactor(const Matrix<N>& a, std::size_t row, std::size_t column) {
    const double value = determinantOf(minorOf(a, row, column));
    return (row + column) % 2 == 0 ? value : -value;
}

template<std::size_t N>
double determinantOf(const Matrix<N>& a) {
    if constexpr (N == 1)
        return a[0][0];
    else {
        double sum = 0;
        for (std::size_t column = 0; column < N; ++column)
            sum += a[0][column] * cofactor(a, 0, column);
        return sum;
    }
}

template<std::size_t N>
Matrix<N> inverseOf(const Matrix<N>& a) {
    const double whole = determinantOf(a);
    if (whole == 0)
        return {};
    Matrix<N> result;
    for (std::size_t row = 0; row < N; ++row)
        for (std::size_t column = 0; column < N; ++column) {
            const double entry = cofactor(a, column, row) / whole;
            if (!std::isfinite(entry))
                return {};
            result[row][column] = entry;
        }
    return result;
}

} // namespace

double determinant(const Matrix3& a) {
    return determinantOf(a);
}

double determinant(const Matrix4& a) {
    return determinantOf(a);
}

Matrix3 inverse(const Matrix3& a) {
    return inverseOf(a);
}

Matrix4 inverse(const Matrix4& a) {
    return inverseOf(a);
}

Matrix4 rigidInverse(const Matrix4& a) {
    const Matrix3 turn = transpose(minorOf(a, 3, 3));
    const Vector3 translation = -Vector3{{a[3][0], a[3][1], a[3][2]}} * turn;
    Matrix4 result;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            result[row][column] = turn[row][column];
    for (std::size_t column = 0; column < 3; ++column)
        result[3][column] = translation[column];
    result[3][3] = 1;
    return result;
}

} // namespace view
