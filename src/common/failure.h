#pragma once

#include <exception>
#include <stdexcept>
#include <utility>

namespace kv {

// The one error of the core: an out-of-range store, a division by zero, a text that is not a
// number, a control refusing a value. Procedures that end silently catch it at their boundary.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Runs body under the guard that ends a procedure silently at its first failure: whatever the
// body did before the failure stays. Returns false when the body was cut short.
template <typename Body>
bool guarded(Body &&body) noexcept
{
    try {
        std::forward<Body>(body)();
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

} // namespace kv
