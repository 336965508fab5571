// Vectors of three and four doubles for coordinates of composition space. Plain values: no state,
// no running command.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace view {

template<std::size_t N>
struct Vector {
    std::array<double, N> entries{};

    constexpr double& operator[](std::size_t i) { return entries[i]; }
    constexpr double operator[](std::size_t i) const { return entries[i]; }
    constexpr bool operator==(const Vector&) const = default;
};
using Vector3 = Vector<3>;
using Vector4 = Vector<4>;

template<std::size_t N>
constexpr double dot(const Vector<N>& a, const Vector<N>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < N; ++i)
        sum += a[i] * b[i];
    return sum;
}

template<std::size_t N>
constexpr Vector<N> operator*(Vector<N> a, double factor) {
    for (double& entry : a.entries)
        entry *= factor;
    return a;
}

template<std::size_t N>
constexpr Vector<N> operator+(Vector<N> a, const Vector<N>& b) {
    for (std::size_t i = 0; i < N; ++i)
        a[i] += b[i];
    return a;
}

template<std::size_t N>
constexpr Vector<N> operator-(const Vector<N>& a) {
    return a * -1.0;
}

template<std::size_t N>
constexpr Vector<N> operator-(const Vector<N>& a, const Vector<N>& b) {
    return a + -b;
}

template<std::size_t N>
double length(const Vector<N>& a) {
    return std::sqrt(dot(a, a));
}

// Multiplies by the reciprocal of the length. A vector of length 0 is unchanged.
template<std::size_t N>
Vector<N> normalize(const Vector<N>& a) {
    const double size = length(a);
    return size == 0 ? a : a * (1 / size);
}

} // namespace view
