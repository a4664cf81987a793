#pragma once

// Ownership of one system resource: a value, the value that means "none", and how it is closed.
// Every handle kind of the system is an alias of this one template, so that each is closed exactly
// once, on every path. Move-only.

#include <utility>

namespace ZelBase {

// Traits: `using Type`, `static Type Empty() noexcept`, `static void Close(Type) noexcept`.
template <typename Traits>
class UniqueResource {
public:
    using Type = typename Traits::Type;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Type value) noexcept : value_(value) {}
    UniqueResource(UniqueResource&& other) noexcept : value_(other.Release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    UniqueResource(const UniqueResource&) = delete;
    UniqueResource& operator=(const UniqueResource&) = delete;
    ~UniqueResource() { Reset(); }

    Type Get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return value_ != Traits::Empty(); }
    // For pointers: access to what they point to.
    Type operator->() const noexcept { return value_; }

    // Closes what is held and takes over `value`.
    void Reset(Type value = Traits::Empty()) noexcept {
        Type old = std::exchange(value_, value);
        if (old != Traits::Empty()) {
            Traits::Close(old);
        }
    }
    // Gives the resource up to the caller, who must close it.
    Type Release() noexcept { return std::exchange(value_, Traits::Empty()); }
    // Closes what is held and returns the place for a function that hands out a new resource.
    Type* Put() noexcept {
        Reset();
        return &value_;
    }

private:
    Type value_ = Traits::Empty();
};

} // namespace ZelBase
