// Writing the patcher executable: the template's copy gets the icon, version and skin-package resources, is
// verified, signed when asked, and only then replaces the output.

#include "packager/build_job.h"

#include "packager/icon.h"
#include "packager/pe_image.h"
#include "packager/resources.h"
#include "packager/signing.h"
#include "packager/version_resource.h"
#include "packager/win32/building_file.h"
#include "packager/win32/file_patch.h"
#include "packager/win32/resource_io.h"
#include "core/crc32.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/win32/scoped_win.h"
#include "skin/package.h"
#include "skin/win32/embedded_skin.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace nv {
namespace {

constexpr uint64_t kMaxTemplate = 0x4000000; // 64 MiB

class Writer {
public:
    Writer(const BuildRequest& request, BuildLogFn log, void* context)
        : request_(request), log_(log), context_(context), temp_(request.outputPath) {}

    BuildResult run();
    // The temporary copy goes whatever happened; used when memory ran out halfway.
    void dropTemp() { temp_.remove(); }

private:
    void say(const std::wstring& line) {
        if (log_) log_(context_, line);
    }
    BuildResult fail(const std::wstring& message) {
        BuildResult result;
        result.message = message;
        return result;
    }
    BuildResult failAndDelete(const std::wstring& message) {
        dropTemp();
        return fail(message);
    }
    // Asked between steps, never inside one: a step half done would leave nothing to clean up but the copy.
    bool cancelled() const { return request_.cancel && request_.cancel->load(); }
    BuildResult stop() {
        BuildResult result = failAndDelete(kBuildCancelledMessage);
        result.cancelled = true;
        return result;
    }

    std::wstring writeResources(const std::vector<ResourceItem>& kept, const std::vector<IcoEntry>& icons);
    bool finishImage(const PeTail& tail, DWORD& error);
    bool verify();

    const BuildRequest& request_;
    BuildLogFn log_;
    void* context_;
    BuildingFile temp_;
};

BuildResult Writer::run() {
    const BuildRequest& r = request_;
    if (!fileExists(r.templatePath))
        return fail(L"Şablon exe bulunamadı: " + r.templatePath +
                    L"\n(Norvane.Template.exe oluşturucunun yanında olmalı)");
    if (r.outputPath.empty()) return fail(L"Çıktı dosyası seçilmedi.");
    if (r.packageBytes.empty()) return fail(L"Skin paketi boş.");

    Bytes image;
    if (!readFileBytes(r.templatePath, image, kMaxTemplate) || image.size() < 0x200 || image[0] != 'M' ||
        image[1] != 'Z')
        return fail(L"Şablon geçerli bir exe değil.");
    // A signature or appended data of the template must not reach the resource writer: the one would be
    // stale, the other dropped. Both are taken off the copy, and the overlay is put back after the update.
    PeLayout layout;
    PeTail tail;
    Bytes cut;
    const bool isPe = readPeLayout(image, layout);
    if (isPe) tail = readPeTail(image, layout);
    if (isPe && cutPeTail(image, layout, cut)) image = std::move(cut);

    const std::wstring folder = pathParent(r.outputPath);
    if (!folder.empty() && !createFolders(folder)) return fail(L"Çıktı klasörü oluşturulamadı: " + folder);
    if (cancelled()) return stop();

    DWORD error = 0;
    switch (temp_.create(error)) {
    case BuildingFile::Start::InUse:
        return fail(L"Bu çıktıyı şu anda başka bir oluşturma yazıyor: " + r.outputPath);
    case BuildingFile::Start::Failed:
        return fail(L"Şablon kopyalanamadı: " + systemErrorText(error));
    case BuildingFile::Start::Created:
        break;
    }
    if (!temp_.write(image.data(), image.size(), error))
        return failAndDelete(L"Şablon kopyalanamadı: " + systemErrorText(error));
    image = Bytes();
    say(L"Şablon kopyalandı.");

    std::vector<IcoEntry> icons;
    if (!r.iconBytes.empty()) {
        std::wstring message;
        if (!readIcoDirectory(r.iconBytes, icons, message)) return failAndDelete(message);
    }
    if (cancelled()) return stop();

    const bool newIcon = !icons.empty();
    std::vector<ResourceItem> kept;
    if (!readResources(
            temp_.path(),
            [&](const ResourceId& type, const ResourceId& name) {
                return !replacedByBuild(type, name, newIcon);
            },
            kept, error))
        return failAndDelete(L"Kaynak güncelleme başlatılamadı: " + systemErrorText(error));
    const std::wstring failure = writeResources(kept, icons);
    if (!failure.empty()) return failAndDelete(failure);
    kept = {};
    if (!finishImage(tail, error)) return failAndDelete(L"Kaynaklar yazılamadı: " + systemErrorText(error));
    if (cancelled()) return stop();

    if (!verify()) return failAndDelete(L"Doğrulama başarısız: gömülü skin okunamadı.");
    say(L"Doğrulama tamam.");
    if (cancelled()) return stop();

    BuildResult result;
    if (r.signing.enabled) {
        std::wstring message;
        if (!signExecutable(r.signing, temp_.path(), r.version, log_, context_, message) ||
            !confirmSignature(r.signing, temp_.path(), log_, context_, result.signature, message))
            return failAndDelete(message);
        result.wasSigned = true;
        say(L"İmza eklendi.");
        if (cancelled()) return stop();
    }

    // Measured here, where only this build can change the file: what the build reports is the file it puts in
    // place, whoever replaces the output afterwards.
    if (!fileCrc32(temp_.path(), result.crc32, result.size)) return failAndDelete(L"Çıktı okunamadı.");
    DWORD attributes = GetFileAttributesW(r.outputPath.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesW(r.outputPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!temp_.moveOver(r.outputPath, error)) {
        dropTemp();
        // Wine reports a file held open by another process as access denied, Windows as a sharing violation.
        if (error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED)
            return fail(L"Çıktı dosyası kullanımda (patcher açık olabilir): " + r.outputPath);
        return fail(L"Çıktı yazılamadı: " + systemErrorText(error));
    }
    result.ok = true;
    return result;
}

// The update starts from an empty resource set (see ResourceRewrite): the template's resources that stay are
// written back first, then the icons, the version information and the skin package. Returns the failure.
std::wstring Writer::writeResources(const std::vector<ResourceItem>& kept,
                                    const std::vector<IcoEntry>& icons) {
    ResourceRewrite rewrite;
    if (!rewrite.begin(temp_.path()))
        return L"Kaynak güncelleme başlatılamadı: " + systemErrorText(rewrite.error());
    for (const ResourceItem& item : kept)
        rewrite.write(item);

    if (!icons.empty()) {
        bool written = true;
        for (const ResourceItem& item : iconResources(request_.iconBytes, icons))
            written = rewrite.write(item) && written;
        if (written) say(L"İkon yazıldı (" + std::to_wstring(icons.size()) + L" boyut).");
    }
    if (rewrite.write({ResourceId::number(kResourceVersion), ResourceId::number(1), 0,
                       buildVersionResource(request_.version)}))
        say(L"Sürüm bilgisi yazıldı.");
    const Bytes& package = request_.packageBytes;
    if (rewrite.write(ResourceId::number(kResourceRcdata), ResourceId::number(SKIN_RESOURCE_ID), 0,
                      package.data(), package.size()))
        say(L"Skin paketi gömüldü (" + sizeText(package.size()) + L").");
    const Bytes& keys = request_.updateKeys;
    if (!keys.empty() &&
        rewrite.write(ResourceId::number(kResourceRcdata), ResourceId::number(UPDATE_KEYS_RESOURCE_ID), 0,
                      keys.data(), keys.size()))
        say(L"Güncelleme anahtarları gömüldü: patcher yalnızca imzalı dosya listelerini kabul eder.");

    if (!rewrite.end()) return L"Kaynaklar yazılamadı: " + systemErrorText(rewrite.error());
    return {};
}

// Resource writers leave the checksum stale, may drop appended data and stamp the clock into the resource
// directories; the written copy is put right where it lies: only the pages that change are written.
bool Writer::finishImage(const PeTail& tail, DWORD& error) {
    // Usually the writer left the sections alone at the end and the template had no overlay: one pass. Else
    // the end is put right first and the image fixed in a second pass.
    uint64_t sectionsEnd = 0;
    bool endRight = false;
    const auto fixWhenEndRight = [&](uint8_t* data, size_t size) {
        PeLayout layout;
        if (!readPeLayout(data, size, layout)) return false;
        sectionsEnd = layout.sectionsEnd;
        endRight = size - sectionsEnd == tail.overlay.size() &&
                   std::equal(tail.overlay.begin(), tail.overlay.end(), data + sectionsEnd);
        return !endRight || fixFinishedPeImage(data, size, tail);
    };
    if (!editFileInPlace(temp_.path(), fixWhenEndRight, error)) return false;
    if (endRight) return true;
    return replaceFileEnd(temp_.path(), sectionsEnd, tail.overlay, error) &&
           editFileInPlace(
               temp_.path(), [&](uint8_t* data, size_t size) { return fixFinishedPeImage(data, size, tail); },
               error);
}

// The package must come back from the copy exactly as it went in.
bool Writer::verify() {
    const wchar_t* path = temp_.path().c_str();
    win::ScopedModule module(
        LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
    if (!module.get()) module.reset(LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE));
    if (!module.get()) return false;
    // The patcher's own reader is run over the bytes where they lie; copying the files out would only cost
    // memory.
    const uint8_t* data = nullptr;
    size_t size = 0;
    if (!findEmbeddedSkin(module.get(), data, size) || !checkSkinPackage(data, size)) return false;
    const Bytes& package = request_.packageBytes;
    if (size != package.size() || std::memcmp(data, package.data(), size) != 0) return false;
    // A patcher that lost its keys would trust any server: they must read back as written, or not be there.
    const Bytes& keys = request_.updateKeys;
    HRSRC found = FindResourceW(module.get(), MAKEINTRESOURCEW(UPDATE_KEYS_RESOURCE_ID),
                                MAKEINTRESOURCEW(kResourceRcdata));
    if (!found) return keys.empty();
    HGLOBAL loaded = LoadResource(module.get(), found);
    const void* embedded = loaded ? LockResource(loaded) : nullptr;
    return embedded && SizeofResource(module.get(), found) == keys.size() &&
           std::memcmp(embedded, keys.data(), keys.size()) == 0;
}

} // namespace

BuildResult writePatcherExecutable(const BuildRequest& request, BuildLogFn log, void* context) {
    Writer writer(request, log, context);
    try {
        return writer.run();
    } catch (const std::bad_alloc&) {
        writer.dropTemp();
        BuildResult result;
        result.message = L"Bellek yetersiz.";
        return result;
    }
}

} // namespace nv
