#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Lays the report out, line by line: sections of labelled values. Each line is handed over at once, so that
/// a driver that ends the process leaves everything before it, the title of its own section included.
class ReportWriter {
public:
    /// Takes one line, without its end.
    using Sink = std::function<void(std::wstring_view)>;
    /// Returns the text without what is nobody's business.
    using Mask = std::function<std::wstring(std::wstring)>;

    /// Characters from the beginning of a line to its value.
    static constexpr std::size_t kValueColumn = 30;
    /// Longer values are cut: the texts come from drivers and from the registry.
    static constexpr std::size_t kLongestValue = 400;

    ReportWriter(Sink sink, Mask mask);

    /// A line of the report's own, as it is.
    void line(std::wstring_view text);

    /// Runs one part of the report under its title. What it throws is noted as notLookedAt().
    void section(std::wstring_view title, const std::function<void()>& content);

    /// "label   value". The value is masked, and characters that would leave the line become question marks.
    /// A label that does not reach the column of the values leaves two blanks at the least.
    void value(std::wstring_view label, std::wstring_view text);

    /// One more line under the last value.
    void more(std::wstring_view text);

    /// Says in the section that something in it could not be looked at, and why. The reason is masked.
    void notLookedAt(std::wstring_view label, std::wstring_view reason);

    /// Titles of the sections in which that was said, in order and once each.
    const std::vector<std::wstring>& incomplete() const { return incomplete_; }

private:
    std::wstring foreign(std::wstring_view text) const;

    Sink sink_;
    Mask mask_;
    std::wstring title_;
    std::vector<std::wstring> incomplete_;
};
