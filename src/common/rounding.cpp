#include "common/rounding.h"

#include <cmath>

#include "common/failure.h"

namespace kv {

double roundHalfEven(double v)
{
    const double floor = std::floor(v);
    const double diff = v - floor;
    if (diff < 0.5)
        return floor;
    if (diff > 0.5)
        return floor + 1.0;
    return std::fmod(floor, 2.0) == 0.0 ? floor : floor + 1.0;
}

double roundHalfEven(double v, int decimals)
{
    const double scale = std::pow(10.0, decimals);
    return roundHalfEven(v * scale) / scale;
}

double divide(double numerator, double denominator)
{
    if (denominator == 0.0)
        throw Failure("division by zero");
    const double q = numerator / denominator;
    if (!std::isfinite(q))
        throw Failure("overflow");
    return q;
}

} // namespace kv
