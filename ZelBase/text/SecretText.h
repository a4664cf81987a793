#pragma once

// Passwords. A copy of one that was made for some work is overwritten when that work is done, lest
// it be found later in freed memory, a dump or the page file. Text that lives in a std::string does
// not do that: growing, moving and ending leave its characters behind.
//
// Keep a password in a SecretText; where a function of others needs a string or a structure, put a
// WipeAtEnd beside it. Nothing here includes a Windows header.

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace ZelBase {

// Overwrites the bytes with zeros.
inline void WipeMemory(void* memory, std::size_t size) noexcept {
    if (size != 0) {
        std::memset(memory, 0, size);
        // As if somebody read the zeros; without that the compiler leaves them out.
        asm volatile("" : : "r"(memory) : "memory");
    }
}

// A text that overwrites its memory whenever it gives it up: when it changes, grows, or ends. Its
// characters are always on the heap, so that moving it moves the one copy there is. Zero characters
// are characters like any other, and one more stands behind the last.
template <typename Character>
class BasicSecretText {
public:
    using View = std::basic_string_view<Character>;

    BasicSecretText() noexcept = default;
    // Throws std::bad_alloc, like all that makes the text longer; nothing has changed then.
    explicit BasicSecretText(View text) { Append(text); }
    BasicSecretText(const BasicSecretText& other) : BasicSecretText(other.Text()) {}
    BasicSecretText(BasicSecretText&& other) noexcept { Swap(other); }
    BasicSecretText& operator=(BasicSecretText other) noexcept {
        Swap(other);
        return *this;
    }
    ~BasicSecretText() { Clear(); }

    // Valid until the text changes.
    View Text() const noexcept { return View(CStr(), size_); }
    const Character* CStr() const noexcept { return characters_ ? characters_.get() : kNone; }
    bool IsEmpty() const noexcept { return size_ == 0; }

    // `text` must not be a part of this one.
    void Append(View text) {
        if (room_ - size_ <= text.size()) { // the last place is the zero's
            Grow(size_ + text.size() + 1);
        }
        std::copy(text.begin(), text.end(), characters_.get() + size_);
        size_ += text.size();
        characters_[size_] = Character();
    }
    void Clear() noexcept {
        if (characters_) {
            WipeMemory(characters_.get(), room_ * sizeof(Character));
        }
        characters_.reset();
        size_ = room_ = 0;
    }

private:
    static constexpr Character kNone[1] = {};

    void Swap(BasicSecretText& other) noexcept {
        std::swap(characters_, other.characters_);
        std::swap(size_, other.size_);
        std::swap(room_, other.room_);
    }
    void Grow(std::size_t needed) {
        BasicSecretText grown;
        grown.room_ = std::max(needed, 2 * room_);
        grown.characters_ = std::make_unique<Character[]>(grown.room_);
        grown.size_ = size_;
        std::copy_n(CStr(), size_, grown.characters_.get());
        Swap(grown);
    }

    std::unique_ptr<Character[]> characters_;
    std::size_t size_ = 0;
    std::size_t room_ = 0; // in characters, 0 or more than size_
};

using SecretText = BasicSecretText<char>;
using WideSecretText = BasicSecretText<wchar_t>;

// Overwrites, at the end of a scope, what a string held last, or the bytes of a plain structure or
// array. A string must not have grown since it got the password: reserve its room before.
template <typename Value>
class WipeAtEnd {
public:
    explicit WipeAtEnd(Value& value) noexcept : value_(value) {}
    ~WipeAtEnd() {
        if constexpr (std::is_trivially_copyable_v<Value>) {
            WipeMemory(&value_, sizeof value_);
        } else {
            WipeMemory(value_.data(), value_.size() * sizeof(typename Value::value_type));
        }
    }
    WipeAtEnd(const WipeAtEnd&) = delete;
    WipeAtEnd& operator=(const WipeAtEnd&) = delete;

private:
    Value& value_;
};

// Utf16ToBytes (see TextConversion), leaving no other copy behind.
SecretText NarrowSecret(std::wstring_view text);

} // namespace ZelBase
