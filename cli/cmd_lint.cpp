// nvbuild lint: the skin author's checklist, beyond the loader's own warnings.

#include "cli/json_writer.h"
#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "cli/text_columns.h"
#include "core/text.h"
#include "skin/skin_lint.h"

namespace nv {
namespace {

std::string jsonReport(const LintReport& report) {
    JsonWriter json;
    json.beginObject();
    json.key("ok").value(report.loaded && report.findings.empty());
    json.key("loaded").value(report.loaded);
    json.key("findings").beginArray();
    for (const LintFinding& f : report.findings) {
        json.beginObject();
        json.key("file").value(f.file);
        json.key("line").value(f.line);
        json.key("column").value(f.column);
        json.key("control").value(f.control);
        json.key("code").value(f.code);
        json.key("message").value(f.message);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.text();
}

// "file:line:column: control: message", as compilers write it, so that editors can jump to the place.
std::wstring findingLine(const LintFinding& f) {
    std::wstring place = utf8ToWide(f.file);
    if (f.line > 0) place += L":" + std::to_wstring(f.line);
    if (f.line > 0 && f.column > 0) place += L":" + std::to_wstring(f.column);
    const std::wstring about = f.control.empty() ? f.message : f.control + L": " + f.message;
    return printable(place.empty() ? about : place + L": " + about);
}

int commandLint(const Invocation& invocation, Console& console) {
    const bool json = invocation.has(L"--json");
    SkinWorkspace workspace;
    std::wstring message, note;
    LintReport report;
    if (!loadSkinInput(invocation.arguments[0], workspace, message, note)) {
        if (json) {
            report.findings.push_back({"", 0, "source", message, 0, {}});
            console.outLine(utf8ToWide(jsonReport(report)));
        }
        return failed(console, message);
    }
    // The source as its author wrote it, before any composition.
    report = lintSkin(workspace.files);
    if (!note.empty())
        report.findings.insert(report.findings.begin(), {"", 0, "unreadable", L"Not: " + note, 0, {}});

    if (json) {
        console.outLine(utf8ToWide(jsonReport(report)));
    } else {
        for (const LintFinding& f : report.findings)
            console.outLine(findingLine(f));
        if (report.findings.empty()) console.outLine(L"Bulgu yok.");
    }
    if (report.findings.empty()) return kExitOk;
    const std::wstring count = std::to_wstring(report.findings.size()) + L" bulgu";
    return failed(console, report.loaded ? count + L"." : L"Skin yüklenemedi; " + count + L".");
}

constexpr std::wstring_view kLintArguments[] = {L"SOURCE"};
constexpr OptionSpec kLintOptions[] = {{L"--json", L""}};

} // namespace

const Command kLintCommand{
    L"lint",
    L"Skin yazarlarının sık yaptığı hataları dosya ve satırıyla bulur.",
    L"lint SOURCE [--json]",
    L"Argümanlar:\n"
    L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"Seçenekler:\n"
    L"  --json  bulguları tek bir JSON nesnesi olarak yazar: ok, loaded ve findings (file, line, column,\n"
    L"          control, code, message)\n"
    L"\n"
    L"Yükleyicinin uyarılarına ek olarak bulunanlar: görseli eksik ya da açılamayan image kontrolü; dosya\n"
    L"adından A-Z dışındaki bir harfin büyüklüğüyle ayrılan görsel adı; pencerenin tamamen ya da kısmen\n"
    L"dışındaki kontrol; bilinmeyen tür, öğe ya da öznitelik; çözülemeyen (bu yüzden varsayılana dönen) "
    L"renk;\n"
    L"aynı kimliği taşıyan iki kontrol; dil dosyasında olmayan bir anahtarı adlandıran link_url; "
    L"norvane.ini'de\n"
    L"aralığa çekilen, varsayılana dönen ya da bilinmeyen ayar; genişliği olmayan metin alanı; hiçbir yerde\n"
    L"kullanılmayan dosya; skinde bulunduğu hâlde çözülemeyen görsel (gerçek nedeniyle: 8192 piksel sınırı\n"
    L"ya da çözücünün sözü); languagePath'in adlandırdığı ama skinde olmayan dil dosyası; zip'e UTF-8\n"
    L"işareti olmadan yazılmış (kod sayfası 437 ile okunan) dosya adı; bir pakete sığmayacak kadar çok\n"
    L"(4096'dan fazla) dosya.\n"
    L"\n"
    L"Her bulgu bir satır: dosya:satır:sütun: açıklama; bir kontrolle ilgili bulguda açıklamadan önce\n"
    L"kontrolün kimliği (kimliği yoksa sırası: \"kontrol #7\"). Okunamayan XML dosyası okuyucunun durduğu\n"
    L"yerle bildirilir. Çıkış 0: bulgu yok; 1: bulgu var (sayısı standart hatada) ya da skin okunamadı.\n",
    kLintArguments,
    kLintOptions,
    commandLint,
};

} // namespace nv
