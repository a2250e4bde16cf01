#include "ui/sections.h"

#include "packager/signing.h"

namespace nv::ui {

const SectionInfo& sectionInfo(int section) {
    static const SectionInfo sections[kSectionCount] = {
        {"kaynak", L"Kaynak", L"Skin paketi ve görseller",
         L"Skin .zip dosyasını ya da klasörünü bırakın; görseller, adresler ve ayarlar otomatik okunur."},
        {"baglantilar", L"Bağlantılar", L"Sunucu ve buton adresleri",
         L"Patcher'ın bağlanacağı adresler ve butonların açacağı sayfalar."},
        {"davranis", L"Davranış", L"İndirme ve başlatma", L"İndirme hızı ve oyunun nasıl başlatılacağı."},
        {"kimlik", L"Kimlik", L"Simge ve dosya bilgisi",
         L"Patcher exe'sinin simgesi ve Özellikler > Ayrıntılar bilgileri."},
        {"cikti", L"Çıktı ve İmza", L"Kayıt yeri, sertifika",
         L"Exe'nin kaydedileceği yer ve isteğe bağlı kod imzalama."},
        {"derleme", L"Derleme", L"EXE oluştur, günlük",
         L"Patcher exe'sini oluşturun; adımlar ve sonuç burada görünür."},
    };
    return sections[(section >= 0 && section < kSectionCount) ? section : 0];
}

const std::vector<FieldSpec>& fixedFields() {
    static const std::vector<FieldSpec> fields = {
        {kFieldConfigUrl, kBaglantilar, L"Yama yapılandırma adresi (config)",
         L"Patcher dosya listesini ve duyuruları bu adresten okur.", L"https://…/kaldratorrent.config.xml",
         kStylePlain, true},
        {kFieldNewsUrl, kBaglantilar, L"Haber sayfası",
         L"Patcher içindeki haber/duyuru alanında açılan sayfa.", L"https://…/launcher/haberler", kStylePlain,
         true},
        {kFieldFeedUrl, kBaglantilar, L"Duyuru ve online adresi",
         L"Duyuru başlıkları ve online sayısı bu adresten okunur.", L"https://…/patcher/feed", kStylePlain,
         true},
        {kFieldTitle, kBaglantilar, L"Pencere başlığı (görev çubuğunda görünür)", L"", L"Örn: Sunucu Adı",
         kStylePlain, false},
        {kFieldSegment, kDavranis, L"", L"", L"", kStyleNumberCentered, false},
        {kFieldRunArgs, kDavranis, L"Oyuna verilecek ek argümanlar (isteğe bağlı)", L"", L"Örn: --lang tr",
         kStylePlain, true},
        {kFieldOutName, kKimlik, L"Çıktı dosya adı", L"", L"Kaldra.exe", kStylePlain, false},
        {kFieldProduct, kKimlik, L"Ürün adı", L"", L"Ürün adı", kStylePlain, false},
        {kFieldCompany, kKimlik, L"Şirket", L"", L"Şirket adı", kStylePlain, false},
        {kFieldVersion, kKimlik, L"Sürüm", L"", L"1.0.0.0", kStylePlain, true},
        {kFieldCopyright, kKimlik, L"Telif hakkı", L"", L"© 2026 …", kStylePlain, false},
        {kFieldOutPath, kCikti, L"Kaydedilecek yer",
         L"Patcher oyun klasörünün köküne (client klasörü) konmalıdır.", L"C:\\…\\Kaldra.exe", kStylePlain,
         false},
        {kFieldPfx, kCikti, L"Sertifika (.pfx)", L"", L"sertifika.pfx", kStylePlain, false},
        {kFieldPassword, kCikti, L"Parola", L"Kaydedilmez; yalnızca bu oturumda kullanılır.", L"",
         kStylePassword, false},
        {kFieldThumbprint, kCikti, L"Sertifika parmak izi (SHA-1)",
         L"Sertifikanın Ayrıntılar sekmesindeki Parmak izi değeri.", L"3a 7f 0c … (40 onaltılık rakam)",
         kStylePlain, true},
        {kFieldPlugin, kCikti, L"İmza eklentisi (.dll)", L"", L"hizmetin signtool eklentisi", kStylePlain,
         false},
        {kFieldPluginMetadata, kCikti, L"Eklentinin ayar dosyası (hesap, sertifika profili)", L"",
         L"metadata.json", kStylePlain, false},
        {kFieldSignCommand, kCikti, L"İmza komutu",
         L"{file} imzalanacak exe'nin yolu, %AD% o ortam değişkeninin değeri olur; dosyaya yazılmaz.",
         L"jsign --storepass %PIN% … {file}", kStylePlain, true},
        {kFieldTimestamp, kCikti, L"Zaman damgası sunucusu", L"", kDefaultTimestampServer, kStylePlain, true},
        {kFieldTimestampMore, kCikti, L"Yedek sunucular", L"", L"http://… http://…", kStylePlain, true},
    };
    return fields;
}

const FieldSpec* findField(int id) {
    for (const FieldSpec& field : fixedFields())
        if (field.id == id) return &field;
    return nullptr;
}

std::span<const ToggleSpec> behaviourToggles() {
    static constexpr ToggleSpec toggles[] = {
        {kItemToggleCloseOnStart, "close_on_start", L"Oyun açılınca patcher kapansın",
         L"Başla'ya basınca patcher penceresi kapanır."},
        {kItemToggleAutoStart, "auto_start", L"Güncelleme bitince oyunu otomatik başlat",
         L"Oyuncunun Başla'ya basmasına gerek kalmaz."},
        {kItemToggleAllowError, "allow_error", L"Güncelleme başarısızsa da Başla açık kalsın",
         L"Sunucuya ulaşılamazsa oyuncu yine de girebilir."},
        {kItemToggleBrowserEmu, "browser_emu", L"Haber sayfası IE11 kipinde açılsın",
         L"Modern sitelerin gömülü tarayıcıda düzgün görünmesi için."},
    };
    return toggles;
}

const ToggleSpec* findToggle(int item) {
    for (const ToggleSpec& toggle : behaviourToggles())
        if (toggle.item == item) return &toggle;
    return nullptr;
}

} // namespace nv::ui
