// The skin as the builder handles it: a set of companion files and pictures is loaded as the preview loads
// it, then composed with the operator's edits and packed as a build packs it. Whatever loaded before
// composition must still load after it: the in-place writers may change values, never break a file, and the
// feed address lands wherever the skin has the feed's controls. The author's checklist runs over the same
// bytes and must agree with the loader.
//
// Input: entries of [name index: 1 byte][length: 4 bytes, little-endian][data], the name taken from a fixed
// list so that the fuzzer spends its time inside the files rather than on their names.

#include "skin/package.h"
#include "skin/skin_lint.h"
#include "skin/workspace.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr const char* kNames[] = {"skin.xml",  "fernwick.url.xml", "fernwick.locale.xml", "norvane.ini",
                                  "bg.png",    "main.png",         "btn_up.png",          "btn_on.png",
                                  "gauge.png", "crest.bmp",        "custom_url.xml",      "en.locale.xml"};

nv::SkinFileSet filesOf(const uint8_t* data, size_t size) {
    nv::SkinFileSet set;
    size_t pos = 0;
    while (size - pos >= 5) {
        const char* name = kNames[data[pos] % (sizeof kNames / sizeof *kNames)];
        uint32_t length;
        std::memcpy(&length, data + pos + 1, 4);
        pos += 5;
        size_t n = std::min<size_t>(length, size - pos);
        set.putFile(name, nv::Bytes(data + pos, data + pos + n));
        pos += n;
    }
    return set;
}

void require(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    nv::SkinFileSet files = filesOf(data, size);
    nv::SkinModel model;
    nv::LoadMessages loaded;
    const bool loads = nv::loadSkinModel(files, model, &loaded);
    require(loads == loaded.error.empty()); // a failed load always says why, a good one has no reason

    const nv::LintReport lint = nv::lintSkin(files);
    require(lint.loaded == loads);
    for (const nv::LintFinding& f : lint.findings)
        require(!f.message.empty() && f.line >= 0 && (f.file.empty() || files.hasFile(f.file)));

    nv::SkinWorkspace ws;
    std::wstring message;
    if (!ws.loadSkinSet(files, L"fuzz", message)) {
        require(!message.empty());
        return 0;
    }
    ws.configUrl = L"https://yeni.example/cfg?a=1&b=<\"'>";
    ws.iframeUrl = L"https://yeni.example/haber&x";
    ws.feedUrl = L"https://yeni.example/feed\"";
    for (nv::ButtonLink& link : ws.buttonLinks)
        ws.setButtonLink(link.id, L"https://b.example/?q=&\"<>");

    nv::Bytes package;
    nv::LoadMessages messages;
    const bool built = ws.buildSkinPackage(package, messages);
    if (loads) require(built);
    if (!built) {
        require(!messages.error.empty());
        return 0;
    }
    nv::SkinFileSet unpacked;
    require(nv::readSkinPackage(package.data(), package.size(), unpacked));
    nv::SkinModel again;
    require(nv::loadSkinModel(unpacked, again));
    require(again.controls.size() == model.controls.size() || !loads);
    // The feed's own controls, however their ids are written, let the operator change the feed address.
    const bool feedControls = std::any_of(model.controls.begin(), model.controls.end(),
                                          [](const nv::SkinControl& c) { return c.id.starts_with("FEED_"); });
    if (loads && feedControls) require(again.feedUrl == ws.feedUrl);
    return 0;
}
