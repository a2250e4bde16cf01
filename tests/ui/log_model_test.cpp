#include "ui/log_model.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

BuildLog makeLog(int viewHeight) {
    BuildLog log;
    log.setMetrics(20, 8, 24);
    log.setViewHeight(viewHeight);
    return log;
}

TEST(BuildLog, MessagesSplitIntoLinesWithOneTimeStamp) {
    struct Case {
        const wchar_t* message;
        std::vector<std::wstring> texts;
    } cases[] = {
        {L"a\r\nb", {L"a", L"b"}},        {L"tek", {L"tek"}},
        {L"x\n\ny\r", {L"x", L"", L"y"}}, {L"son\n", {L"son", L""}},
        {L"iki\r\r\n", {L"iki\r", L""}}, // only one carriage return goes
    };
    for (const Case& c : cases) {
        BuildLog log = makeLog(100);
        log.add(c.message, 3, L"12:00:01");
        ASSERT_EQ(log.size(), c.texts.size()) << c.message;
        for (size_t i = 0; i < c.texts.size(); ++i) {
            EXPECT_EQ(log.lines()[i].text, c.texts[i]);
            EXPECT_EQ(log.lines()[i].time, i == 0 ? L"12:00:01" : L"");
            EXPECT_EQ(log.lines()[i].level, 3);
        }
    }
    EXPECT_EQ(logTimeText(7, 5, 9), L"07:05:09");
}

TEST(BuildLog, KeepsTheNewestFiveThousandLines) {
    BuildLog log = makeLog(100);
    for (int i = 0; i < 5001; ++i)
        log.add(std::to_wstring(i), 0, L"");
    EXPECT_EQ(log.size(), BuildLog::kMaxLines);
    EXPECT_EQ(log.lines().front().text, L"1");
    EXPECT_EQ(log.lines().back().text, L"5000");
    log.add(L"a\nb\nc", 0, L"");
    EXPECT_EQ(log.size(), BuildLog::kMaxLines);
    EXPECT_EQ(log.lines().front().text, L"4");
    EXPECT_EQ(log.offset(), log.maxOffset()); // it followed the end all along
}

TEST(BuildLog, FollowsTheEndOnlyWhenAtIt) {
    BuildLog log = makeLog(100);
    for (int i = 0; i < 20; ++i)
        log.add(L"satır", 0, L"");
    EXPECT_EQ(log.maxOffset(), 20 * 20 + 16 - 100);
    EXPECT_EQ(log.offset(), log.maxOffset());

    // Scrolled up by more than a line: new lines leave the view where it is.
    log.scrollBy(-45);
    const int held = log.offset();
    log.add(L"yeni", 0, L"");
    EXPECT_EQ(log.offset(), held);

    // Within one line of the end still counts as the end.
    log.scrollTo(log.maxOffset() - 20);
    log.add(L"yeni", 0, L"");
    EXPECT_EQ(log.offset(), log.maxOffset());
}

TEST(BuildLog, VisibleLinesAndThumb) {
    BuildLog log = makeLog(100);
    for (int i = 0; i < 50; ++i)
        log.add(L"x", 0, L"");
    log.scrollTo(0);
    size_t first = 0, last = 0;
    log.visibleRange(first, last);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(last, 5u); // tops 8, 28, 48, 68, 88
    LogScrollBar bar = log.scrollBar();
    ASSERT_TRUE(bar.visible);
    EXPECT_EQ(bar.thumbTop, 0);
    EXPECT_EQ(bar.thumbBottom, 24); // 100 * 100 / 1016 is below the minimum length

    log.scrollTo(log.maxOffset());
    log.visibleRange(first, last);
    EXPECT_EQ(last, 50u);
    EXPECT_LE(log.lineTop(first), 0 + 20);
    bar = log.scrollBar();
    EXPECT_EQ(bar.thumbBottom, 100);

    // Dragging: the pointer's travel stands for the same share of the content, within the limits.
    EXPECT_EQ(log.dragOffset(0, 10), 10 * 1016 / 100);
    EXPECT_EQ(log.dragOffset(0, -10), 0);
    EXPECT_EQ(log.dragOffset(0, 1000), log.maxOffset());

    // A taller view pulls the offset back; with nothing left to scroll the bar goes.
    log.setViewHeight(2000);
    EXPECT_EQ(log.offset(), 0);
    EXPECT_FALSE(log.scrollBar().visible);
}

TEST(BuildLog, PlainTextForTheClipboard) {
    BuildLog log = makeLog(100);
    log.add(L"bir\niki", 1, L"10:00:00");
    EXPECT_EQ(log.plainText(), L"10:00:00  bir\r\niki\r\n");
}

} // namespace
} // namespace nv::ui
