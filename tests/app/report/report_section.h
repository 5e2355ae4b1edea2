#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "app/report/report_writer.h"
#include "tests/support/standin_session.h"

/// Writes one section without hiding anything.
class ReportSection : public testing::Test {
protected:
    void write(const std::function<void(ReportWriter&)>& content) {
        text.clear();
        writer.section(L"Title", [&] { content(writer); });
    }

    /// One line of the section.
    static std::wstring line(const std::wstring& label, const std::wstring& value) {
        return lineStart(label, value) + L"\n";
    }

    /// One line of the section up to there.
    static std::wstring lineStart(const std::wstring& label, const std::wstring& value) {
        std::wstring whole = L"  " + label;
        whole.resize(ReportWriter::kValueColumn, L' ');
        return L"\n" + whole + value;
    }

    StandinSession session;
    std::wstring text;
    ReportWriter writer{[this](std::wstring_view each) { text += std::wstring(each) + L"\n"; },
                        [](std::wstring value) { return value; }};
};
