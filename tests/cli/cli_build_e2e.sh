#!/usr/bin/env bash
# End-to-end test of nvbuild build (and of list / unpack on the patcher it writes).
# cli_build_e2e.sh NVBUILD SAMPLE_SKIN [TEMPLATE SIGNTOOL RUNNER]
#   With the Windows build: TEMPLATE is a template executable, SIGNTOOL the tests' stand-in for signtool.exe and
#   RUNNER the Wine runner. Natively only the checks before a build and the composition can run.
set -u
nvbuild=$1
sample=$2
template=${3:-}
signtool=${4:-}
runner=${5:-}
. "$(dirname "$0")/e2e_common.sh"

S=$(winpath "$sample")
# first_err ARGS...: the exit code and the first line of standard error of nvbuild ARGS.
first_err() { nv "$@" >"$work/out" 2>"$work/err"; printf '%s %s' $? "$(head -n 1 "$work/err" | tr -d '\r')"; }

mkdir -p "$work/out-dir"
touch "$work/not-a-template.exe" "$work/cert.pfx"
T=${template:+$(winpath "$template")}
T=${T:-$(winpath "$work/not-a-template.exe")}
O=$(winpath "$work/out-dir/Kaldra.exe")

# --- the window's start checks, first failure first --------------------------------------------------------
check "a missing template" [ "$(first_err build "$S" --out "$O" --template "$(winpath "$work/yok.exe")")" = \
    "1 Patcher şablonu bulunamadı: $(winpath "$work/yok.exe") — build.bat ile derleyin." ]
check "an output not ending in .exe" [ "$(first_err build "$S" --out "$(winpath "$work/out-dir/Kaldra.exe.bak")" \
    --template "$T")" = "1 Çıktı dosyası .exe ile bitmeli." ]
check "an output folder that is not there" [ "$(first_err build "$S" --out "$(winpath "$work/yok/K.EXE")" \
    --template "$T")" = "1 Çıktı klasörü bulunamadı: $(winpath "$work/yok")" ]
# The template under another name (a hard link): still the template, and it must stay one.
cp "${template:-$work/not-a-template.exe}" "$work/sablon.exe"
ln "$work/sablon.exe" "$work/Kaldra.exe"
check "the template itself as the output" [ "$(first_err build "$S" --out "$(winpath "$work/Kaldra.exe")" \
    --template "$(winpath "$work/sablon.exe")")" = \
    "1 Çıktı, patcher şablonunun üzerine yazılamaz: $(winpath "$work/Kaldra.exe")" ]
check "... and the template is as it was" cmp -s "$work/sablon.exe" "${template:-$work/not-a-template.exe}"
check "a certificate that is not there" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --sign-pfx "$(winpath "$work/yok.pfx")")" = "1 Sertifika dosyası bulunamadı: $(winpath "$work/yok.pfx")" ]
check "a password variable that is not set" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --sign-pfx "$(winpath "$work/cert.pfx")" --sign-password-env NV_E2E_UNSET)" = \
    "1 Ortam değişkeni tanımlı değil: NV_E2E_UNSET" ]
check "a plug-in without its metadata file" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --sign-dlib "$(winpath "$work/cert.pfx")")" = "1 İmza açık ama eklentinin ayar dosyası seçilmedi." ]
check "a command without the file's place" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --sign-command "imzala.exe")" = "1 İmza komutunda {file} yer tutucusu yok." ]
check "an icon that is no picture" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --icon "$(winpath "$sample/skin.xml")")" = \
    "1 Simge dönüştürülemedi: Gorsel cozulemedi (desteklenen: PNG, JPG, BMP, GIF)." ]
check "a link for a button the skin lacks" [ "$(first_err build "$S" --out "$O" --template "$T" \
    --link NOPE=https://x.example/)" = "1 Skin'de bu kimlikte buton yok: NOPE" ]
check "... and none of them wrote anything" [ -z "$(ls -A "$work/out-dir")" ]

if [ -z "$runner" ]; then
    check "natively the build stops before the executable" [ "$(first_err build "$S" --out "$O" --template "$T")" = \
        "1 Oluşturulamadı: Patcher exe'si yalnızca Windows'ta yazılabilir." ]
    finish
    exit 0
fi

# --- a branded patcher ---------------------------------------------------------------------------------------
edits=(--title "Kaldra Online" --config-url https://patch.kaldra.example/v2/config.xml --conn 6
       --link URL_SITE=https://yeni.kaldra.example/)
identity=(--icon "$(winpath "$sample/btn_start_up.png")" --product "Kaldra Online" --company "Kaldra Oyun"
          --version 2.4.1 --copyright "(C) 2026 Kaldra")
nv build "$S" --out "$O" --template "$T" "${identity[@]}" "${edits[@]}" >"$work/out" 2>"$work/err"
status=$?
check "build exits 0 with nothing on stderr" [ $status -eq 0 -a ! -s "$work/err" ]
python3 - "$work/out" "$work/out-dir/Kaldra.exe" "$O" <<'PY' >"$work/check" 2>&1
import re, sys, zlib
lines = open(sys.argv[1], encoding="utf-8").read().replace("\r", "").split("\n")[:-1]
data = open(sys.argv[2], "rb").read()
def size_text(n):
    for limit, div, unit in ((1024, 1, "B"), (1 << 20, 1024, "KB"), (1 << 30, 1 << 20, "MB")):
        if n < limit:
            return f"{n} B" if unit == "B" else f"{n / div:.1f} {unit}".replace(".", ",")
    return f"{n / (1 << 30):.1f} GB".replace(".", ",")
expected = [f"Oluşturma başladı → {sys.argv[3]}", "Şablon kopyalandı.", "İkon yazıldı (6 boyut).",
            "Sürüm bilgisi yazıldı.", None, "Doğrulama tamam.", f"Tamamlandı → {sys.argv[3]}",
            f"CRC32: {zlib.crc32(data):08X}    Boyut: {size_text(len(data))}"]
ok = len(lines) == len(expected) and re.fullmatch(r"Skin paketi gömüldü \(\d+,\d (KB|MB)\)\.", lines[4])
ok = ok and all(e is None or e == l for e, l in zip(expected, lines))
if not ok:
    print("printed:", lines, "\nexpected:", expected)
    sys.exit(1)
PY
check "... printing every step, then the output, its CRC32 and size" [ $? -eq 0 ]
[ -s "$work/check" ] && cat "$work/check"
check "... leaving no temporary file" [ ! -e "$work/out-dir/Kaldra.exe.building" ]

nv compose "$S" "$(winpath "$work/composed.nvsk")" "${edits[@]}" 2>/dev/null
nv list "$O" >"$work/list.exe" 2>"$work/err"
check "list reads the patcher's package" [ $? -eq 0 ]
nv list "$(winpath "$work/composed.nvsk")" >"$work/list.nvsk"
check "... which is the package compose writes with the same edits" cmp -s "$work/list.exe" "$work/list.nvsk"
nv unpack "$O" "$(winpath "$work/unpacked")" 2>"$work/err"
check "unpack writes the patcher's files" cmp -s "$sample/bg.png" "$work/unpacked/bg.png"
(cd "$work/out-dir" && nv build "$S" --out Goreli.exe --template "$T" >"$work/out" 2>"$work/err")
check "an output named without a folder lands in the current folder" [ -s "$work/out-dir/Goreli.exe" ]

# --- signing through the stand-in signtool.exe ---------------------------------------------------------------
# The stand-in "signs" by putting a file that osslsigncode signed in place of the one it is given (its
# make_signing_fixtures.py copies lie beside it), so that the signature read back from the output is a real one.
signed=$(dirname "$signtool")/../signed
cp "$work/out-dir/Kaldra.exe" "$work/previous.exe"
export NV_FAKE_SIGNTOOL_LOG NV_FAKE_SIGNTOOL_COPY
NV_FAKE_SIGNTOOL_LOG=$(winpath "$work/signtool.log")
NV_FAKE_SIGNTOOL_COPY=$(winpath "$signed/signed-rfc3161.exe")
sign=(--sign-pfx "$(winpath "$work/cert.pfx")" --sign-password-env NV_E2E_PASSWORD --signtool "$(winpath "$signtool")")
NV_E2E_PASSWORD='gizli parola' nv build "$S" --out "$O" --template "$T" "${sign[@]}" >"$work/out" 2>"$work/err"
check "a signed build exits 0" [ $? -eq 0 ]
thumbprint=$(sed -n 's/^thumbprint=//p' "$signed/expected.txt")
tr -d '\r' <"$work/out" | tail -n 4 >"$work/last"
check "... time-stamped by default, and ends with the signature read back from the file" sh -c \
    "tr -d '\r' <'$work/out' | grep -qx 'İmzalanıyor (zaman damgalı)...' &&
     sed -n 1p '$work/last' | grep -qx 'Dijital imza eklendi.' &&
     sed -n 2p '$work/last' | grep -qx 'İmzalayan: Kaldra Yazılım Test' &&
     sed -n 3p '$work/last' | grep -qx 'Parmak izi: $thumbprint' &&
     sed -n 4p '$work/last' | grep -qE '^Zaman damgası: [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8} UTC \(RFC 3161\)$'"
check "... the tool got the password" grep -q '/p "gizli parola"' "$work/signtool.log"
check "... which nvbuild never printed" sh -c "! grep -q gizli '$work/out' '$work/err'"

cp "$work/out-dir/Kaldra.exe" "$work/previous.exe"
NV_FAKE_SIGNTOOL_COPY= NV_E2E_PASSWORD=x nv build "$S" --out "$O" --template "$T" "${sign[@]}" >"$work/out" \
    2>"$work/err"
check "a tool that reports success and signs nothing is refused" grep -qx \
    "Oluşturulamadı: İmzalama başarılı göründü ama dosyada imza yok." <(tr -d '\r' <"$work/err")
check "... and the previous patcher as it was" cmp -s "$work/previous.exe" "$work/out-dir/Kaldra.exe"

cp "$work/out-dir/Kaldra.exe" "$work/previous.exe"
NV_FAKE_SIGNTOOL_EXIT=4 NV_FAKE_SIGNTOOL_TS_EXIT=4 NV_FAKE_SIGNTOOL_SAY="SignTool Error: olmadi" \
    NV_E2E_PASSWORD=x nv build "$S" --out "$O" --template "$T" "${sign[@]}" >"$work/out" 2>"$work/err"
check "a failed signing exits 1" [ $? -eq 1 ]
check "... with the signer's message" grep -qx "Oluşturulamadı: İmzalama başarısız: SignTool Error: olmadi" \
    <(tr -d '\r' <"$work/err")
check "... and the previous patcher as it was" cmp -s "$work/previous.exe" "$work/out-dir/Kaldra.exe"
check "... and no temporary file" [ ! -e "$work/out-dir/Kaldra.exe.building" ]

# --- the other certificate sources, chosen by the options that only they take -------------------------------
# A cloud service's plug-in: the first time-stamp server fails, the further one answers.
: >"$work/signtool.log"
touch "$work/Dlib.dll" "$work/metadata.json"
NV_FAKE_SIGNTOOL_TS_EXIT=4 NV_FAKE_SIGNTOOL_TS_GOOD=http://ts2.invalid nv build "$S" --out "$O" --template "$T" \
    --signtool "$(winpath "$signtool")" --sign-dlib "$(winpath "$work/Dlib.dll")" \
    --sign-dmdf "$(winpath "$work/metadata.json")" --sign-ts http://ts1.invalid --sign-ts-more http://ts2.invalid \
    >"$work/out" 2>"$work/err"
check "a build signed through a plug-in exits 0" [ $? -eq 0 ]
check "... the plug-in and its metadata on both lines, the servers in order" sh -c \
    "[ \$(wc -l <'$work/signtool.log') -eq 2 ] &&
     grep -F '/dlib \"$(winpath "$work/Dlib.dll")\" /dmdf \"$(winpath "$work/metadata.json")\"' '$work/signtool.log' |
         sed -n 1p | grep -qF '/tr \"http://ts1.invalid\"' &&
     sed -n 2p '$work/signtool.log' | grep -qF '/tr \"http://ts2.invalid\"'"
check "... and the signer read back" grep -qx "İmzalayan: Kaldra Yazılım Test" <(tr -d '\r' <"$work/out")

# The operator's own command, its PIN from the environment, never printed.
: >"$work/signtool.log"
NV_E2E_PIN=gizli-pin-77 nv build "$S" --out "$O" --template "$T" \
    --sign-command "\"$(winpath "$signtool")\" kendi %NV_E2E_PIN% {file}" >"$work/out" 2>"$work/err"
check "a build signed by the operator's command exits 0" [ $? -eq 0 ]
check "... which got the PIN and the file" grep -qF "kendi gizli-pin-77 \"$(winpath "$work/out-dir/Kaldra.exe.building")\"" \
    "$work/signtool.log"
check "... said so, and showed the signer" sh -c "tr -d '\r' <'$work/out' | grep -qx 'İmzalanıyor (kendi komutunuzla)...' &&
    tr -d '\r' <'$work/out' | grep -qx 'İmzalayan: Kaldra Yazılım Test'"
check "... and never printed the PIN" sh -c "! grep -q gizli-pin '$work/out' '$work/err'"

finish
