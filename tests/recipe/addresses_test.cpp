#include "recipe/addresses.h"

#include "core/text.h"

#include <gtest/gtest.h>

namespace nv {
namespace {

TEST(Addresses, AbsoluteWebAddressesWithAHost) {
    const struct {
        const wchar_t* text;
        bool ok;
    } cases[] = {
        {L"https://patch.kaldra.example/launcher/config.xml", true},
        {L"  HTTP://patch.example  ", true}, // blanks around and the scheme's case do not matter
        {L"http://127.0.0.1:8080/x?y=1#z", true},
        {L"https://user@host.example/", true},
        {L"https://[::1]:443/", true},
        {L"https://sunucu.örnek.tr/haber", true}, // a host in its own letters
        {L"", false},
        {L"patch sunucum", false},
        {L"forum yok ğüşıöç", false},
        {L"patch.kaldra.example/config.xml", false}, // no scheme
        {L"ftp://patch.example/", false},
        {L"https://", false},
        {L"https:///config.xml", false}, // no host
        {L"https://:80/", false},
        {L"https://host:/", false},
        {L"https://host:8o/", false},
        {L"https://host:123456/", false},
        {L"https://patch sunucum/", false}, // a blank inside
        {L"https://[::1/", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(isWebAddress(c.text), c.ok) << wideToUtf8(c.text);
}

TEST(Addresses, WarningsNameWhatCannotWork) {
    Recipe recipe;
    recipe.configUrl = L"https://patch.example/config.xml";
    recipe.links = {{0, "URL_SITE", L"https://kaldra.example/"}, {1, "URL_FORUM", L""}};
    EXPECT_TRUE(addressWarnings(recipe).empty()); // an empty news, feed or link address is a choice

    recipe.configUrl = L"  ";
    recipe.feedUrl = L"status feed";
    recipe.links[1].address = L"forum yok ğüşıöç";
    const std::vector<std::wstring> lines = addressWarnings(recipe);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], L"Uyarı: yama adresi boş — bu patcher güncelleme alamaz.");
    EXPECT_EQ(lines[1], L"Uyarı: duyuru adresi geçersiz (status feed) — açılamaz.");
    EXPECT_EQ(lines[2], L"Uyarı: URL_FORUM butonunun adresi geçersiz (forum yok ğüşıöç) — açılamaz.");
    recipe.configUrl = L"patch sunucum";
    EXPECT_EQ(addressWarnings(recipe)[0],
              L"Uyarı: yama adresi geçersiz (patch sunucum) — bu patcher güncelleme alamaz.");
}

} // namespace
} // namespace nv
