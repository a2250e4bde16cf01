#!/usr/bin/env bash
# End-to-end test of how nvbuild answers a command line: what it says first, on which stream, with which exit
# code, for every kind of wrong invocation, for help, and for inputs that are not there.
# cli_usage_e2e.sh NVBUILD SAMPLE_SKIN [RUNNER]   (RUNNER: the Wine runner for nvbuild.exe; paths go as Z:\...)
set -u
nvbuild=$1
sample=$2
runner=${3:-}
. "$(dirname "$0")/e2e_common.sh"

S=$(winpath "$sample")
O=$(winpath "$work/o.nvsk")
missing=$(winpath "$work/yok")

# answers EXIT STREAM FIRST_LINE ARGS...: nvbuild ARGS exits with EXIT, FIRST_LINE is the first line of STREAM
# (out or err) and the other stream stays empty.
answers() {
    local exit=$1 stream=$2 first=$3
    shift 3
    nv "$@" >"$work/out" 2>"$work/err"
    local got=$? other=out
    [ "$stream" = out ] && other=err
    local line
    line=$(head -n 1 "$work/$stream" | tr -d '\r')
    if [ "$got" -eq "$exit" ] && [ "$line" = "$first" ] && [ ! -s "$work/$other" ]; then return 0; fi
    echo "     nvbuild $*: exit $got, std$stream starts '$line'; stdout/stderr:"
    cat "$work/out" "$work/err" | sed 's/^/     | /'
    return 1
}
case_() { check "nvbuild $(printf '%s ' "${@:4}" | tr '\r\n' '  ')-> $1 on std$2: $3" answers "$@"; }

# --- the command line is wrong: exit 2, what is wrong first, on stderr -------------------------------------
case_ 2 err "Eksik argüman: COMMAND"
case_ 2 err "Bilinmeyen komut: frob" frob
case_ 2 err "Bilinmeyen seçenek: --jsn" --jsn
case_ 2 err "Eksik argüman: OUT" pack onlyone
case_ 2 err "Eksik argüman: PACKAGE" list
case_ 2 err "Fazla argüman: b" list a b
case_ 2 err "Bilinmeyen seçenek: --jsn" inspect X --jsn
case_ 2 err "Bilinmeyen seçenek: -x" lint X -x
case_ 2 err "Fazla argüman: extra" compose "$S" "$O" extra
case_ 2 err "Değer eksik: --title" compose "$S" "$O" --title
case_ 2 err "Seçenek iki kez verildi: --conn" compose "$S" "$O" --conn 2 --conn 3
case_ 2 err "--conn 1 ile 8 arasında bir tam sayı olmalı: 9" compose "$S" "$O" --conn 9
case_ 2 err "--seg 1 ile 64 arasında bir tam sayı olmalı: 0" compose "$S" "$O" --seg 0
case_ 2 err "--auto-start 0 ya da 1 olmalı: maybe" compose "$S" "$O" --auto-start maybe
case_ 2 err "--link ID=URL biçiminde olmalı: URL_SITE" compose "$S" "$O" --link URL_SITE
case_ 2 err "Satır sonu içeren değer: --title" compose "$S" "$O" --title $'Kaldra\nauto_start=1'
case_ 2 err "Satır sonu içeren değer: --run-args" compose "$S" "$O" --run-args $'-x\r'
case_ 2 err "Bilinmeyen komut: frob" help frob
case_ 2 err "Boş argüman: DIR" unpack "$O" ""
case_ 2 err "Boş argüman: SOURCE" inspect ""
case_ 2 err "Eksik argüman: SOURCE" build
case_ 2 err "Eksik seçenek: --out" build "$S"
case_ 2 err "Değer eksik: --sign-password-env" build "$S" --out x.exe --sign-password-env
case_ 2 err "Bilinmeyen seçenek: --sign-password" build "$S" --out x.exe --sign-password gizli
case_ 2 err "--conn 1 ile 8 arasında bir tam sayı olmalı: 0" build "$S" --out x.exe --conn 0
case_ 2 err "Değer eksik: --session" build --session
for version in v2.1 1.2.3.4.5 70000.1 1..2 ""; do
    case_ 2 err "--version bir ile dört arası, noktayla ayrılmış 0..65535 sayısı olmalı (1.2.3.4): $version" \
        build "$S" --out x.exe --version "$version"
done
case_ 2 err "--conn 1 ile 8 arasında bir tam sayı olmalı: 9" render "$S" "$O" --conn 9
case_ 2 err "Eksik argüman: CLIENT_DIR" crclist
case_ 2 err "Değer eksik: --exclude" crclist "$S" --exclude
case_ 2 err "Seçenek iki kez verildi: --out" crclist "$S" --out a.txt --out b.txt
case_ 2 err "Eksik argüman: URL" feed
case_ 2 err "Değer eksik: --feed" render "$S" "$(winpath "$work/r.png")" --feed
check "... and nothing was written by any of them" [ ! -e "$work/o.nvsk" ]
nv pack onlyone >/dev/null 2>"$work/err"
check "a usage error shows the command's short usage after the message" \
    grep -qx "Kullanım: nvbuild pack SOURCE OUT" <(tr -d '\r' <"$work/err")

# --- help: exit 0, standard output ----------------------------------------------------------------------------
overview="nvbuild: Norvane skinlerini paketler, inceler, denetler ve oluşturmaya hazırlar."
case_ 0 out "$overview" --help
case_ 0 out "$overview" -h
case_ 0 out "$overview" help
case_ 0 out "$overview" help help
case_ 0 out "$overview" help --help
for command in pack list unpack inspect lint compose; do
    nv help "$command" >"$work/help" 2>"$work/err"
    check "help $command exits 0 with its usage first" \
        sh -c "[ $? -eq 0 ] && [ ! -s '$work/err' ] && head -n 1 '$work/help' | grep -q '^Kullanım: nvbuild $command '"
done
nv compose -h >"$work/help2" 2>&1
check "compose -h is help compose" cmp -s "$work/help" "$work/help2"
check "compose's help names units, ranges and the form of --link" \
    sh -c "grep -q 'MB cinsinden, 1..64' '$work/help' && grep -q -- '--conn N .*1..8' '$work/help' && grep -q -- '--link ID=URL' '$work/help'"

# --- inputs that are not there: exit 1, "Bulunamadı: " before any reader runs ---------------------------------
for command in "pack $missing $O" "list $missing" "unpack $missing $(winpath "$work/d")" "inspect $missing" \
    "lint $missing" "compose $missing $O"; do
    # shellcheck disable=SC2086 # the command and its arguments, split on purpose (no spaces in these paths)
    case_ 1 err "Bulunamadı: $missing" $command
done
nv inspect "$missing" --json >"$work/out" 2>"$work/err"
check "inspect --json of a missing path still prints one JSON object" \
    python3 -c "import json,sys; j=json.load(open(sys.argv[1],encoding='utf-8')); sys.exit(0 if not j['ok'] and j['warnings'] == [sys.argv[2]] else 1)" \
    "$work/out" "Bulunamadı: $missing"
check "... and the reason on stderr" grep -q "^Bulunamadı: " "$work/err"
case_ 1 err "Bulunamadı: $missing" render "$S" "$(winpath "$work/r.png")" --feed "$missing"
printf 'x' >"$work/plain.txt"
# nvbuild feed reads through the patcher's transport: the native build has none and says so.
if [ -n "$runner" ]; then
    case_ 1 err "Duyuru adresi okunamadı: sunucuya bağlanılamadı (12029)." feed http://127.0.0.1:9/feed.json
else
    case_ 1 err "Bu nvbuild ağdan okuyamaz: patcher'ın okuduğu gibi okumak için Windows yapısını (nvbuild.exe, \
Linux'ta ./nvbuild) kullanın." feed http://127.0.0.1:9/feed.json
fi

# --- a builder session file as the build's recipe: its skin and output unless the command line names them ------
session() { printf '; Norvane Olusturucu - son oturum (parola kaydedilmez)\r\n%s' "$1" >"$work/olusturucu.ini"; }
I=$(winpath "$work/olusturucu.ini")
case_ 1 err "Bulunamadı: $missing" build --session "$missing"
session ''
case_ 1 err "Oturum dosyasında skin yok: $I" build --session "$I"
session "skin=$missing"$'\r\n'
case_ 1 err "Bulunamadı: $missing" build --session "$I"
session "skin=$S"$'\r\nout_path=\r\n'
case_ 2 err "Eksik seçenek: --out" build --session "$I"
case_ 1 err "Patcher şablonu bulunamadı: $missing — build.bat ile derleyin." build --session "$I" "$S" \
    --out "$(winpath "$work/K.exe")" --template "$missing"
case_ 1 err "Klasör ya da .zip değil: $(winpath "$work/plain.txt")" pack "$(winpath "$work/plain.txt")" "$O"

# An output that is the source itself, or one of the files a folder is read from, is refused untouched.
cp -r "$sample" "$work/own"
python3 -c 'import shutil, sys; shutil.make_archive(sys.argv[1], "zip", sys.argv[2])' "$work/own" "$sample"
cp -r "$work/own" "$work/own-before"
cp "$work/own.zip" "$work/own-before.zip"
Z=$(winpath "$work/own.zip")
X=$(winpath "$work/own/skin.xml")
case_ 1 err "Çıktı kaynağın üzerine yazılamaz: $Z" pack "$Z" "$Z"
case_ 1 err "Çıktı kaynağın üzerine yazılamaz: $Z" compose "$Z" "$Z"
case_ 1 err "Çıktı kaynağın üzerine yazılamaz: $X" pack "$(winpath "$work/own")" "$X"
case_ 1 err "Çıktı kaynağın üzerine yazılamaz: $(winpath "$work/own/bg.png")" render "$(winpath "$work/own")" \
    "$(winpath "$work/own/bg.png")"
check "... and the zip and the folder are as they were" \
    sh -c "cmp -s '$work/own.zip' '$work/own-before.zip' && diff -r '$work/own' '$work/own-before' >/dev/null"

finish
