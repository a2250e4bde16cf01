#include "ui/sections.h"

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
         L"", kStylePlain, true, "config_url"},
        {kFieldNewsUrl, kBaglantilar, L"Haber sayfası",
         L"Patcher içindeki haber/duyuru alanında açılan sayfa.", L"https://…/launcher/haberler", L"",
         kStylePlain, true, "iframe_url"},
        {kFieldFeedUrl, kBaglantilar, L"Duyuru ve online adresi",
         L"Duyuru başlıkları ve online sayısı bu adresten okunur.", L"https://…/patcher/feed", L"",
         kStylePlain, true, "feed_url"},
        {kFieldTitle, kBaglantilar, L"Pencere başlığı (görev çubuğunda görünür)", L"", L"Örn: Sunucu Adı",
         L"", kStylePlain, false, "title"},
        {kFieldSegment, kDavranis, L"", L"", L"", L"4", kStyleNumberCentered, false, "seg"},
        {kFieldRunArgs, kDavranis, L"Oyuna verilecek ek argümanlar (isteğe bağlı)", L"", L"Örn: --lang tr",
         L"", kStylePlain, true, "run_args"},
        {kFieldOutName, kKimlik, L"Çıktı dosya adı", L"", L"Kaldra.exe", L"Kaldra.exe", kStylePlain, false,
         "out_name"},
        {kFieldProduct, kKimlik, L"Ürün adı", L"", L"Ürün adı", L"", kStylePlain, false, "v_product"},
        {kFieldCompany, kKimlik, L"Şirket", L"", L"Şirket adı", L"", kStylePlain, false, "v_company"},
        {kFieldVersion, kKimlik, L"Sürüm", L"", L"1.0.0.0", L"1.0.0.0", kStylePlain, true, "v_version"},
        {kFieldCopyright, kKimlik, L"Telif hakkı", L"", L"© 2026 …", L"", kStylePlain, false, "v_copyright"},
        {kFieldOutPath, kCikti, L"Kaydedilecek yer",
         L"Patcher oyun klasörünün köküne (client klasörü) konmalıdır.", L"C:\\…\\Kaldra.exe", L"",
         kStylePlain, false, "out_path"},
        {kFieldPfx, kCikti, L"Sertifika (.pfx)", L"", L"sertifika.pfx", L"", kStylePlain, false, "sign_pfx"},
        {kFieldPassword, kCikti, L"Parola", L"Kaydedilmez; yalnızca bu oturumda kullanılır.", L"", L"",
         kStylePassword, false, ""},
        {kFieldTimestamp, kCikti, L"Zaman damgası sunucusu", L"", kDefaultTimestampUrl, kDefaultTimestampUrl,
         kStylePlain, true, "sign_ts"},
    };
    return fields;
}

const FieldSpec* findField(int id) {
    for (const FieldSpec& field : fixedFields())
        if (field.id == id) return &field;
    return nullptr;
}

} // namespace nv::ui
