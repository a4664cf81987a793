#include "platform/text/RegularExpression.h"

#include "platform/text/LetterCase.h"
#include "platform/text/MatchingLock.h"

// The library's own bound for one text, in states visited. It counts the states that consume no
// text, which the purse below does not see. (It is a fixed number only for iterators without random
// access; for the others the library raises it with the square of the pattern.)
#define BOOST_REGEX_MAX_STATE_COUNT 1000000
// The traits over the C runtime: those over std::locale would double the size of the DLL.
#define BOOST_REGEX_USE_C_LOCALE
// The library locks nothing, as the compiler has no std::mutex: the matching lock serialises it.
#define BOOST_DISABLE_THREADS
#include <boost/regex.hpp>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace tervane {
namespace {

// Longer ones are refused: compiling takes about a microsecond for each character.
constexpr std::size_t kLongestPattern = 65'536;

// What an operation may spend at most in advance, and what each text adds. A plain pattern spends
// less than ten steps for each character, and so never comes to the end of its purse.
constexpr std::size_t kFullPurse = 8'000'000;
constexpr std::size_t kStepsPerText = 16'000;
constexpr std::size_t kStepsPerCharacter = 64;
// What the copies of the matched groups cost, in steps.
constexpr std::size_t kStepsPerAllocation = 1'000;
constexpr std::size_t kStepsPerGroup = 16;
// A step may have to search a set of characters, as long as the pattern; so many of them may be
// searched for the price of one step.
constexpr std::size_t kSetMembersPerStep = 32;

// A step is a look at one character or a move to the next; most take a few nanoseconds.
class Purse {
public:
    struct Empty {};

    explicit Purse(std::size_t patternLength) noexcept
        : price_(1 + patternLength / kSetMembersPerStep) {}

    void Fill() noexcept {
        steps_ = kFullPurse;
        isSpent_ = false;
    }
    void AddForText(std::size_t characters) noexcept {
        steps_ = std::min(kFullPurse, steps_ + kStepsPerText) + characters * kStepsPerCharacter;
    }
    void SpendStep() { Spend(price_); }
    void Spend(std::size_t steps) {
        if (steps <= steps_) {
            steps_ -= steps;
            return;
        }
        // Once: what the library still does after that is to take down its stack.
        if (!std::exchange(isSpent_, true)) {
            throw Empty();
        }
    }
    bool IsSpent() const noexcept { return isSpent_; }
    void MarkSpent() noexcept { isSpent_ = true; }

private:
    std::size_t price_;
    std::size_t steps_ = kFullPurse;
    bool isSpent_ = false;
};

// Walks a text for the library and pays for it.
class MeteredIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = wchar_t;
    using difference_type = std::ptrdiff_t;
    using pointer = const wchar_t*;
    using reference = const wchar_t&;

    MeteredIterator() noexcept = default;
    MeteredIterator(const wchar_t* at, Purse* purse) noexcept : at_(at), purse_(purse) {}

    reference operator*() const {
        purse_->SpendStep();
        return *at_;
    }
    MeteredIterator& operator++() {
        purse_->SpendStep();
        ++at_;
        return *this;
    }
    MeteredIterator operator++(int) {
        MeteredIterator before = *this;
        ++*this;
        return before;
    }
    MeteredIterator& operator--() {
        purse_->SpendStep();
        --at_;
        return *this;
    }
    MeteredIterator operator--(int) {
        MeteredIterator before = *this;
        --*this;
        return before;
    }
    friend bool operator==(const MeteredIterator& left, const MeteredIterator& right) noexcept {
        return left.at_ == right.at_;
    }

private:
    const wchar_t* at_ = nullptr;
    Purse* purse_ = nullptr;
};

// Makes the purse pay for the group positions too: the library copies all of them for every level
// of
// "(?R)", so that a pattern with many groups would cost gigabytes before it had spent its steps.
template <typename T>
class MeteredAllocator {
public:
    using value_type = T;
    using propagate_on_container_copy_assignment = std::true_type;
    using propagate_on_container_move_assignment = std::true_type;
    using propagate_on_container_swap = std::true_type;

    MeteredAllocator() noexcept = default;
    explicit MeteredAllocator(Purse* purse) noexcept : purse_(purse) {}
    template <typename Other>
    MeteredAllocator(const MeteredAllocator<Other>& other) noexcept : purse_(other.GetPurse()) {}

    T* allocate(std::size_t count) {
        if (purse_ != nullptr) {
            purse_->Spend(kStepsPerAllocation + count * kStepsPerGroup);
        }
        return std::allocator<T>().allocate(count);
    }
    void deallocate(T* place, std::size_t count) noexcept {
        std::allocator<T>().deallocate(place, count);
    }
    Purse* GetPurse() const noexcept { return purse_; }
    friend bool operator==(const MeteredAllocator&, const MeteredAllocator&) noexcept {
        return true;
    }

private:
    Purse* purse_ = nullptr;
};

// "(?i)" in a pattern means the letters of all languages.
struct PatternTraits : boost::c_regex_traits<wchar_t> {
    static wchar_t translate_nocase(wchar_t letter) noexcept { return LowerCase(letter); }
};

using Groups =
    boost::match_results<MeteredIterator, MeteredAllocator<boost::sub_match<MeteredIterator>>>;
using Pattern = boost::basic_regex<wchar_t, PatternTraits>;

} // namespace

class RegularExpression::Matcher {
public:
    // Throws what the library throws at an invalid pattern.
    explicit Matcher(std::wstring_view pattern)
        : pattern_(pattern.data(), pattern.data() + pattern.size()), purse_(pattern.size()) {}

    bool Matches(std::wstring_view text) {
        if (purse_.IsSpent()) {
            return false;
        }
        purse_.AddForText(text.size());
        try {
            Groups groups{Groups::allocator_type(&purse_)};
            return boost::regex_match(MeteredIterator(text.data(), &purse_),
                                      MeteredIterator(text.data() + text.size(), &purse_), groups,
                                      pattern_);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            // The purse is empty, or a bound of the library's is reached.
            purse_.MarkSpent();
            return false;
        }
    }

    void FillPurse() noexcept { purse_.Fill(); }
    bool IsSpent() const noexcept { return purse_.IsSpent(); }

private:
    Pattern pattern_;
    Purse purse_;
};

RegularExpression RegularExpression::WholeTextMatch(std::wstring_view pattern) {
    if (pattern.size() > kLongestPattern) {
        return RegularExpression(nullptr);
    }
    const MatchingLock lock; // for compiling too, which shares the library's tables
    try {
        return RegularExpression(
            std::make_unique<Matcher>(pattern.empty() ? std::wstring_view(L".*") : pattern));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        return RegularExpression(nullptr);
    }
}

RegularExpression RegularExpression::ContainingMatch(std::wstring_view pattern) {
    if (pattern.find_first_of(L"^$") != std::wstring_view::npos) {
        return WholeTextMatch(pattern);
    }
    return WholeTextMatch(L".*(" + std::wstring(pattern) + L").*");
}

RegularExpression::RegularExpression(std::unique_ptr<Matcher> matcher) noexcept
    : matcher_(std::move(matcher)) {}
RegularExpression::RegularExpression(RegularExpression&&) noexcept = default;
RegularExpression& RegularExpression::operator=(RegularExpression&&) noexcept = default;
RegularExpression::~RegularExpression() = default;

bool RegularExpression::IsValid() const noexcept {
    return matcher_ != nullptr;
}

bool RegularExpression::IsSpent() const noexcept {
    const MatchingLock lock;
    return matcher_ != nullptr && matcher_->IsSpent();
}

bool RegularExpression::Matches(std::wstring_view text) const {
    const MatchingLock lock;
    return matcher_ != nullptr && matcher_->Matches(text);
}

void RegularExpression::BeginOperation() const noexcept {
    const MatchingLock lock;
    if (matcher_ != nullptr) {
        matcher_->FillPurse();
    }
}

} // namespace tervane
