#include "ui/focus.h"

#include "tests/ui/layout_measure.h"

#include <gtest/gtest.h>

namespace nv::ui {
namespace {

std::wstring describe(const FocusStop& s) {
    switch (s.kind) {
    case FocusStop::Kind::Field:
        return L"f" + std::to_wstring(s.field);
    case FocusStop::Kind::Log:
        return L"log";
    default:
        return std::to_wstring(s.item) + L"." + std::to_wstring(s.sub);
    }
}

std::vector<std::wstring> chainOf(const PageModel& model) {
    const FakeMeasure measure(96);
    std::vector<std::wstring> names;
    for (const FocusStop& s : focusChain(layoutWindow(1320, 820, 96, model, measure)))
        names.push_back(describe(s));
    return names;
}

const std::vector<std::wstring> kSidebar = {L"1.0", L"1.1", L"1.2", L"1.3", L"1.4", L"1.5"};

std::vector<std::wstring> withSidebar(std::vector<std::wstring> page) {
    std::vector<std::wstring> all = kSidebar;
    all.insert(all.end(), page.begin(), page.end());
    all.push_back(L"2.0"); // the sidebar's build button last
    return all;
}

// Tab walks the sidebar, then the page top to bottom (the form before the right column), then the build
// button; the chips are one stop, disabled things none.
TEST(Focus, TabOrderFollowsThePage) {
    PageModel davranis;
    davranis.section = kDavranis;
    davranis.recipe.settings.connections = 6;
    EXPECT_EQ(chainOf(davranis),
              withSidebar({L"8.6", L"9.0", L"f1103", L"10.0", L"11.0", L"12.0", L"13.0", L"14.0", L"f1104"}));
    // Signing off locks its fields (the certificate's button still switches it on); without a skin the
    // preview button is disabled: no stops.
    PageModel cikti;
    cikti.section = kCikti;
    EXPECT_EQ(chainOf(cikti), withSidebar({L"f1110", L"17.0", L"18.0", L"26.0", L"19.0"}));
    cikti.recipe.signing.enabled = true;
    cikti.skinLoaded = true;
    EXPECT_EQ(chainOf(cikti), withSidebar({L"f1110", L"17.0", L"18.0", L"26.0", L"f1111", L"19.0", L"f1112",
                                           L"f1113", L"f1119", L"3.0"}));
    PageModel derleme = cikti;
    derleme.section = kDerleme;
    derleme.buildState = BuildPageState::Ready;
    EXPECT_EQ(chainOf(derleme), withSidebar({L"20.0", L"24.0", L"log"}));
}

TEST(Focus, NextStopWraps) {
    const std::vector<FocusStop> chain(3);
    struct Case {
        int current;
        bool forward;
        int next;
    } cases[] = {{-1, true, 0}, {-1, false, 2}, {0, true, 1}, {2, true, 0}, {0, false, 2}, {7, true, 0}};
    for (const Case& c : cases)
        EXPECT_EQ(nextFocusStop(chain, c.current, c.forward), c.next) << c.current << c.forward;
    EXPECT_EQ(nextFocusStop({}, 0, true), -1);
}

TEST(Focus, ArrowsOnSelectorsAndSteppers) {
    using K = FocusStop::Kind;
    auto item = [](int item, int sub) { return FocusStop{K::Item, item, sub, 0, {}}; };
    struct Case {
        FocusStop stop;
        Arrow arrow;
        int item, sub;
    } cases[] = {
        {item(kItemSection, 2), Arrow::Down, kItemSection, 3},
        {item(kItemSection, 0), Arrow::Up, kItemNone, 0}, // no wrapping
        {item(kItemSection, 5), Arrow::Down, kItemNone, 0},
        {item(kItemConnectionChip, 4), Arrow::Right, kItemConnectionChip, 5},
        {item(kItemConnectionChip, 1), Arrow::Left, kItemNone, 0},
        {item(kItemConnectionChip, 8), Arrow::Right, kItemNone, 0},
        {item(kItemSegmentMinus, 0), Arrow::Up, kItemSegmentPlus, 0}, // a spin box: up is more
        {item(kItemSegmentPlus, 0), Arrow::Left, kItemSegmentMinus, 0},
        {item(kItemLinkPagePrev, 0), Arrow::Right, kItemLinkPageNext, 0},
        {item(kItemToggleAutoStart, 0), Arrow::Right, kItemNone, 0},
        {{K::Field, kItemNone, 0, kFieldConfigUrl, {}}, Arrow::Down, kItemNone, 0},
    };
    for (const Case& c : cases) {
        const ArrowCommand command = arrowCommand(c.stop, c.arrow);
        EXPECT_EQ(command.item, c.item) << c.stop.item << "." << c.stop.sub;
        EXPECT_EQ(command.sub, c.sub) << c.stop.item << "." << c.stop.sub;
    }
}

} // namespace
} // namespace nv::ui
