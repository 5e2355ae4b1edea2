#include "app/report/report_writer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "framework/drawing/sys_exception.h"

namespace {

constexpr std::wstring_view kIndent = L"  ";
constexpr std::wstring_view kReason = L"Could not be looked at";

bool leavesTheLine(wchar_t character) {
    // The last two are Unicode's own line ends.
    return character < L' ' || (character >= L'\x7F' && character < L'\xA0') || character == L'\x2028' ||
           character == L'\x2029';
}

}  // namespace

ReportWriter::ReportWriter(Sink sink, Mask mask) : sink_(std::move(sink)), mask_(std::move(mask)) {}

void ReportWriter::line(std::wstring_view text) {
    sink_(text);
}

void ReportWriter::section(std::wstring_view title, const std::function<void()>& content) {
    title_ = title;
    line(L"");
    line(title);
    try {
        content();
    } catch (const Panelix::SysException& exception) {
        notLookedAt(kReason, exception.message);
    } catch (const std::exception& exception) {
        // What the standard library throws is in plain letters.
        const std::string_view what = exception.what();
        notLookedAt(kReason, std::wstring(what.begin(), what.end()));
    } catch (...) {
        notLookedAt(kReason, L"a library threw something");
    }
}

void ReportWriter::value(std::wstring_view label, std::wstring_view text) {
    std::wstring whole(kIndent);
    whole += label;
    whole.append(2, L' ');
    whole.resize(std::max(whole.size(), kValueColumn), L' ');
    line(whole + foreign(text));
}

void ReportWriter::more(std::wstring_view text) {
    line(std::wstring(kValueColumn, L' ') + foreign(text));
}

void ReportWriter::notLookedAt(std::wstring_view label, std::wstring_view reason) {
    if (incomplete_.empty() || incomplete_.back() != title_) {
        incomplete_.push_back(title_);
    }
    value(label,
          label == kReason ? std::wstring(reason) : L"could not be looked at: " + std::wstring(reason));
}

std::wstring ReportWriter::foreign(std::wstring_view text) const {
    std::wstring shown = mask_(std::wstring(text));
    if (shown.size() > kLongestValue) {
        shown.resize(kLongestValue);
        shown += L"...";
    }
    std::replace_if(shown.begin(), shown.end(), leavesTheLine, L'?');
    return shown;
}
