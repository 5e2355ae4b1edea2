#include "app/report/report_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "framework/drawing/sys_exception.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReportWriterLines : public testing::Test {
protected:
    std::vector<std::wstring> lines;
    ReportWriter writer{[this](std::wstring_view line) { lines.emplace_back(line); },
                        [](std::wstring text) {
                            const std::size_t secret = text.find(L"secret");
                            return secret == std::wstring::npos ? text : text.replace(secret, 6, L"***");
                        }};
};

TEST_F(ReportWriterLines, ValuesStandInOneColumnUnderTheirSectionsTitle) {
    writer.section(L"Part", [&] {
        writer.value(L"One", L"1");
        writer.value(L"A longer label", L"2");
        writer.more(L"and 3");
    });
    EXPECT_THAT(lines,
                ElementsAre(L"",
                            L"Part",
                            L"  One                         1",
                            L"  A longer label              2",
                            L"                              and 3"));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportWriterLines, ALabelThatReachesTheColumnLeavesTwoBlanks) {
    writer.value(L"A label as long as the column or so", L"1");
    EXPECT_THAT(lines, ElementsAre(L"  A label as long as the column or so  1"));
}

TEST_F(ReportWriterLines, ValuesAreMaskedAndLabelsAreNot) {
    writer.value(L"secret", L"a secret name");
    writer.more(L"secret");
    writer.section(L"secret", [&] { writer.notLookedAt(L"Key", L"secret is closed"); });
    EXPECT_THAT(lines,
                ElementsAre(L"  secret                      a *** name",
                            L"                              ***",
                            L"",
                            L"secret",
                            L"  Key                         could not be looked at: *** is closed"));
}

TEST_F(ReportWriterLines, WhatWouldLeaveTheLineBecomesAQuestionMark) {
    writer.value(L"Name", L"a\r\nb\tc\x1B[2Jd\x7F\x9B\x2028\x2029 \xE4");
    EXPECT_THAT(lines, ElementsAre(L"  Name                        a??b?c?[2Jd???? \xE4"));
}

TEST_F(ReportWriterLines, LongValuesAreCut) {
    writer.value(L"Name", std::wstring(ReportWriter::kLongestValue, L'x'));
    writer.value(L"Name", std::wstring(ReportWriter::kLongestValue + 1, L'y'));
    const std::wstring label = L"  Name                        ";
    EXPECT_EQ(lines.at(0), label + std::wstring(ReportWriter::kLongestValue, L'x'));
    EXPECT_EQ(lines.at(1), label + std::wstring(ReportWriter::kLongestValue, L'y') + L"...");
}

TEST_F(ReportWriterLines, ANameAtTheCutIsMaskedAsAWhole) {
    for (const std::size_t kept : {std::size_t{0}, std::size_t{3}, std::size_t{5}, std::size_t{6}}) {
        lines.clear();
        writer.value(L"Name", std::wstring(ReportWriter::kLongestValue - kept, L'x') + L"secret" + L"yyyyyy");
        const std::wstring whole = std::wstring(ReportWriter::kLongestValue - kept, L'x') + L"***yyyyyy";
        EXPECT_EQ(lines.at(0),
                  L"  Name                        " + whole.substr(0, ReportWriter::kLongestValue) + L"...");
    }
}

TEST_F(ReportWriterLines, WhatIsThrownIsMasked) {
    writer.section(L"One", [] { throw std::runtime_error("no secret"); });
    writer.section(L"Two", [] { throw Panelix::SysException(L"secret", L"Title"); });
    EXPECT_THAT(lines,
                ElementsAre(L"",
                            L"One",
                            L"  Could not be looked at      no ***",
                            L"",
                            L"Two",
                            L"  Could not be looked at      ***"));
}

TEST_F(ReportWriterLines, ASectionThatThrowsIsNotedAndTheNextOneFollows) {
    writer.section(L"One", [] { throw std::runtime_error("no memory"); });
    writer.section(L"Two", [] { throw Panelix::SysException(L"No COM", L"Title"); });
    writer.section(L"Three", [] { throw 5; });
    writer.section(L"Four", [&] { writer.value(L"Label", L"4"); });
    EXPECT_THAT(lines,
                ElementsAre(L"",
                            L"One",
                            L"  Could not be looked at      no memory",
                            L"",
                            L"Two",
                            L"  Could not be looked at      No COM",
                            L"",
                            L"Three",
                            L"  Could not be looked at      a library threw something",
                            L"",
                            L"Four",
                            L"  Label                       4"));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"One", L"Two", L"Three"));
}

TEST_F(ReportWriterLines, ASectionIsIncompleteOnce) {
    writer.section(L"One", [&] {
        writer.notLookedAt(L"A", L"refused");
        writer.notLookedAt(L"B", L"refused");
    });
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"One"));
}

}  // namespace
