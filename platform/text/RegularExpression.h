#pragma once

// Regular expressions as scripts write them: Perl syntax, case-sensitive, matched against the whole
// text. All matching in the system goes through this class. One process-wide lock serialises it,
// and a pattern is compiled once per operation - a walk over the windows, over the subkeys of a
// key - however many texts it is held against.
//
// Patterns come from scripts, so any of them may be wrong or need exponential time, "(a+)+$"
// against a row of "a" for instance. An operation therefore has a purse of matching steps, some for
// the whole operation and some more for every text; when it is empty, the pattern matches nothing
// any more. That bounds an operation to a fraction of a second beyond what is linear in its texts.
//
// Memory that is exhausted says nothing about a pattern or a text: std::bad_alloc is thrown.

#include <memory>
#include <string_view>

namespace tervane {

class RegularExpression {
public:
    // Matches texts that are described by `pattern` from their first to their last character.
    // The empty pattern matches every text. An invalid one matches nothing.
    static RegularExpression WholeTextMatch(std::wstring_view pattern);
    // The rule for the titles of windows: a pattern without "^" and "$" may match any part of the
    // text; with either of them, anywhere in it, it must match the whole.
    static RegularExpression ContainingMatch(std::wstring_view pattern);

    RegularExpression(RegularExpression&&) noexcept;
    RegularExpression& operator=(RegularExpression&&) noexcept;
    ~RegularExpression();

    // Whether the pattern could be compiled.
    bool IsValid() const noexcept;
    // Any thread. Also false once the purse is empty.
    bool Matches(std::wstring_view text) const;
    // Whether the purse has been empty in this operation: what did not match since then might.
    bool IsSpent() const noexcept;
    // Fills the purse again: whoever looks at the same texts over and over begins a new operation
    // each time.
    void BeginOperation() const noexcept;

private:
    class Matcher;

    explicit RegularExpression(std::unique_ptr<Matcher> matcher) noexcept;

    std::unique_ptr<Matcher> matcher_;
};

} // namespace tervane
