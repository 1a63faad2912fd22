#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "common/failure.h"
#include "common/rounding.h"

namespace kv {

// An integer of a fixed width whose every store is range-checked: a value that does not fit is
// a Failure, as the window's 16-bit counters and 8-bit record fields demand.
template <typename T>
class Checked
{
public:
    using value_type = T;

    constexpr Checked() = default;
    Checked(long long v) : m_value(check(v)) {} // NOLINT: implicit on purpose, like a store

    static Checked fromReal(double v)
    {
        if (!std::isfinite(v))
            throw Failure("overflow");
        const double r = roundHalfEven(v);
        if (r < static_cast<double>(std::numeric_limits<T>::min())
            || r > static_cast<double>(std::numeric_limits<T>::max()))
            throw Failure("overflow");
        return Checked(static_cast<long long>(r));
    }

    constexpr T value() const { return m_value; }
    constexpr operator T() const { return m_value; } // NOLINT: reads like the plain integer

    Checked &operator+=(Checked o) { return *this = Checked(static_cast<long long>(m_value) + o.m_value); }
    Checked &operator-=(Checked o) { return *this = Checked(static_cast<long long>(m_value) - o.m_value); }
    Checked &operator*=(Checked o) { return *this = Checked(static_cast<long long>(m_value) * o.m_value); }
    Checked &operator++() { return *this += Checked(1); }
    Checked &operator--() { return *this -= Checked(1); }

    friend Checked operator+(Checked a, Checked b) { return a += b; }
    friend Checked operator-(Checked a, Checked b) { return a -= b; }
    friend Checked operator*(Checked a, Checked b) { return a *= b; }
    // Integer division truncates; a zero divisor is a failure, never a crash.
    friend Checked operator/(Checked a, Checked b)
    {
        if (b.m_value == 0)
            throw Failure("division by zero");
        return Checked(static_cast<long long>(a.m_value) / b.m_value);
    }

private:
    static T check(long long v)
    {
        if (v < static_cast<long long>(std::numeric_limits<T>::min())
            || v > static_cast<long long>(std::numeric_limits<T>::max()))
            throw Failure("overflow");
        return static_cast<T>(v);
    }

    T m_value = 0;
};

using Int16 = Checked<std::int16_t>;
using Int32 = Checked<std::int32_t>;
using Byte = Checked<std::uint8_t>;

} // namespace kv
