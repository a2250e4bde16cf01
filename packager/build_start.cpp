#include "packager/build_start.h"

#include "packager/signing_commands.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"

namespace nv {

bool checkBuildStart(const BuildInputs& inputs, std::wstring& message) {
    const std::wstring folder = pathParent(inputs.outputPath);
    if (!fileExists(inputs.templatePath))
        message = L"Patcher şablonu bulunamadı: " + inputs.templatePath + L" — build.bat ile derleyin.";
    else if (!endsWithIgnoreCase(std::wstring_view(inputs.outputPath), std::wstring_view(L".exe")))
        message = L"Çıktı dosyası .exe ile bitmeli.";
    else if (folder.empty() || !folderExists(folder))
        message = L"Çıktı klasörü bulunamadı: " + folder;
    else if (sameFile(inputs.outputPath, inputs.templatePath))
        // The build would succeed and leave a patcher where the template was: every later build would start
        // from it.
        message = L"Çıktı, patcher şablonunun üzerine yazılamaz: " + inputs.outputPath;
    else if (inputs.signing.enabled)
        return checkSigningInputs(inputs.signing, message);
    else
        return true;
    return false;
}

BuildRequest makeBuildRequest(const BuildInputs& inputs, const std::wstring& title, Bytes package) {
    BuildRequest request;
    request.templatePath = inputs.templatePath;
    request.outputPath = inputs.outputPath;
    request.iconBytes = inputs.iconBytes;
    request.packageBytes = std::move(package);
    request.version = inputs.version;
    request.signing = inputs.signing;
    request.updateKeys = inputs.updateKeys;
    if (request.version.productName.empty()) request.version.productName = trim(title);
    if (request.version.originalFilename.empty())
        request.version.originalFilename = pathFileName(inputs.outputPath);
    return request;
}

} // namespace nv
