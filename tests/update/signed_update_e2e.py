#!/usr/bin/env python3
"""Signed updates under Wine: keys made by nvbuild keygen, a patcher that carries them, lists signed by
nvbuild crclist --sign and checked by a referee (Python's cryptography), and every attack of someone who
controls the server but not the key, each refused with the game folder unchanged.

    signed_update_e2e.py WINE_RUN NVBUILD_EXE TEMPLATE_EXE SAMPLE_SKIN

Run inside with_servers.py --nginx --windows-paths. Prints one line per check; exits 1 when any failed.
"""

import hashlib
import os
import random
import shutil
import subprocess
import sys
import tempfile
import zlib

from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.asymmetric import ec, utils

WINE_RUN, NVBUILD, TEMPLATE, SAMPLE = sys.argv[1:5]
NGINX = os.environ["NV_NGINX_URL"]
SERVED = os.environ["NV_SERVED_DIR"]
SERVED_UNIX = "/" + SERVED[3:].replace("\\", "/") if SERVED.startswith("Z:") else SERVED
failures = 0


def check(what, condition, detail=""):
    global failures
    print(("ok   " if condition else "FAIL ") + what + ("" if condition or not detail else "\n     " + detail))
    failures += 0 if condition else 1


def winpath(path):
    return "Z:" + path.replace("/", "\\")


def wine(*args, timeout=300):
    return subprocess.run([WINE_RUN] + list(args), capture_output=True, timeout=timeout)


def text(result):
    return result.stdout.decode("utf-8", errors="replace") + result.stderr.decode("utf-8", errors="replace")


def forge_crc(data, target):
    """data with its last four bytes chosen so that its CRC-32 is target: CRC-32 is affine in those bits, so
    32 probes and a GF(2) elimination find them."""
    base = zlib.crc32(data[:-4])
    zero = zlib.crc32(b"\0\0\0\0", base)
    columns = [zlib.crc32((1 << i).to_bytes(4, "little"), base) ^ zero for i in range(32)]
    rows = [(columns[i], 1 << i) for i in range(32)]  # (effect, which bits make it)
    solved = []
    for bit in range(32):
        pivot = next((r for r in rows if r[0] >> bit & 1), None)
        if pivot is None:
            continue
        rows.remove(pivot)
        rows = [(e ^ pivot[0], m ^ pivot[1]) if e >> bit & 1 else (e, m) for e, m in rows]
        solved = [(e ^ pivot[0], m ^ pivot[1]) if e >> bit & 1 else (e, m) for e, m in solved]
        solved.append(pivot)
    want, mask = target ^ zero, 0
    for effect, bits in solved:
        low = effect & -effect
        if want & low:
            want ^= effect
            mask ^= bits
    forged = data[:-4] + mask.to_bytes(4, "little")
    assert zlib.crc32(forged) == target
    return forged


def referee_sign(private_value, body):
    key = ec.derive_private_key(private_value, ec.SECP256R1())
    r, s = utils.decode_dss_signature(key.sign(body, ec.ECDSA(hashes.SHA256())))
    return body + b"#nvsignature\t" + (r.to_bytes(32, "big") + s.to_bytes(32, "big")).hex().encode() + b"\n"


work = tempfile.mkdtemp(prefix="nv-signed-e2e-")
client = os.path.join(SERVED_UNIX, "client")
listfile = os.path.join(client, "crclist.txt")
game = os.path.join(work, "Kaldra")
try:
    # --- the operator's keys, checked by the referee ------------------------------------------------------
    keys = {}
    for name in ("eski", "yeni", "yabanci"):
        made = wine(NVBUILD, "keygen", winpath(os.path.join(work, name)))
        check("keygen makes the %s key pair" % name, made.returncode == 0, text(made))
        pub = open(os.path.join(work, name + ".pub")).read().split()
        priv = open(os.path.join(work, name + ".key")).read().split()
        keys[name] = (int(priv[2], 16), bytes.fromhex(pub[2]))
        numbers = ec.derive_private_key(keys[name][0], ec.SECP256R1()).public_key().public_numbers()
        check("... whose public key is the private key's (referee)",
              numbers.x.to_bytes(32, "big") + numbers.y.to_bytes(32, "big") == keys[name][1] and priv[3] == pub[2])
    again = wine(NVBUILD, "keygen", winpath(os.path.join(work, "eski")))
    check("keygen never overwrites a key (exit 1)", again.returncode == 1 and "Zaten var" in text(again), text(again))

    def build(out, *extra):
        return wine(NVBUILD, "build", winpath(SAMPLE), "--out", winpath(out), "--template", winpath(TEMPLATE),
                    "--config-url", NGINX + "/launcher/config.xml", "--seg", "1", *extra)

    patcher = os.path.join(work, "KaldraPatcher.exe")
    built = build(patcher, "--update-key", winpath(os.path.join(work, "eski.pub")))
    check("build embeds the update key", built.returncode == 0 and "anahtar" in text(built), text(built))
    wrong_key = build(os.path.join(work, "Yanlis.exe"), "--update-key", winpath(os.path.join(work, "eski.key")))
    check("build refuses a private key given as --update-key (exit 1)",
          wrong_key.returncode == 1 and "anahtarı geçersiz" in text(wrong_key), text(wrong_key))

    # --- the client, published signed ---------------------------------------------------------------------
    rng = random.Random(22)
    files = {
        "KaldraOyun.exe": rng.randbytes(150000),
        "data/harita.pak": rng.randbytes(3 * 1024 * 1024 + 77),  # segmented: 1 MiB ranges
        "readme.txt": b"Kaldra\r\n",
    }

    def put_client(content):
        """The client's files as given; the list stays, as an operator's folder keeps it between releases."""
        kept = open(listfile, "rb").read() if os.path.exists(listfile) else None
        shutil.rmtree(client, ignore_errors=True)
        os.makedirs(client)
        if kept is not None:
            open(listfile, "wb").write(kept)
        for path, data in content.items():
            os.makedirs(os.path.dirname(os.path.join(client, path)), exist_ok=True)
            open(os.path.join(client, path), "wb").write(data)

    def config(extra=""):
        os.makedirs(os.path.join(SERVED_UNIX, "launcher"), exist_ok=True)
        open(os.path.join(SERVED_UNIX, "launcher", "config.xml"), "w").write(
            "<config>\ncrcpatch_url=%s/client/\n%s\n</config>\n" % (NGINX, extra))

    def crclist(*extra):
        return wine(NVBUILD, "crclist", winpath(client), *extra)

    def sign(key="eski", *extra):
        made = crclist("--sign", winpath(os.path.join(work, key + ".key")), *extra)
        check("crclist --sign %s %s" % (key, " ".join(extra)), made.returncode == 0, text(made))
        return made

    put_client(files)
    config()
    signed = sign()
    data = open(listfile, "rb").read()
    body, _, signature = data.rpartition(b"#nvsignature\t")
    r, s = int(signature[:64], 16), int(signature[64:128], 16)
    try:
        ec.EllipticCurvePublicKey.from_encoded_point(ec.SECP256R1(), b"\x04" + keys["eski"][1]).verify(
            utils.encode_dss_signature(r, s), body, ec.ECDSA(hashes.SHA256()))
        verified = True
    except Exception as e:  # noqa: BLE001 - any failure is the referee's refusal
        verified, signature = False, str(e)
    check("the referee verifies what nvbuild signed (P-256, SHA-256, r||s)", verified, str(signature))
    check("... the list holds each file's SHA-256, version 1 and a 30-day expiry",
          b"#nvversion\t1\n" in data and "30 gün" in text(signed) and
          all(b"#nvsha256\t%s\t%s\n" % (p.encode(), hashlib.sha256(d).hexdigest().encode()) in data
              for p, d in files.items()), data.decode(errors="replace")[:600])
    v1_list = data

    os.makedirs(game)
    shutil.copy(patcher, os.path.join(game, "KaldraPatcher.exe"))

    def run():
        return wine(winpath(os.path.join(game, "KaldraPatcher.exe")), "--headless")

    def folder():
        """The game folder as a player has it, without the patcher's logs, state and fetched config."""
        out = {}
        for root, _, names in os.walk(game):
            for name in names:
                rel = os.path.relpath(os.path.join(root, name), game).replace(os.sep, "/")
                if not (rel.endswith(".log") or rel in ("norvane.state", "kaldratorrent.config.xml")):
                    out[rel] = open(os.path.join(root, name), "rb").read()
        return out

    first = run()
    check("a signed list brings a fresh folder up to date", first.returncode == 0 and
          {p: d for p, d in folder().items() if p in files} == files, text(first))
    check("... and the patcher remembers the version it accepted",
          open(os.path.join(game, "norvane.accepted")).read() == "norvane-accepted 1\n1\n")

    # --- attacks: each refused, nothing on the player's machine changed -----------------------------------
    def attack(what, key, *message, list_accepted=False):
        """list_accepted: the list is the operator's own, so its version is remembered; the file is the attack."""
        def kept():
            return {p: d for p, d in folder().items() if not (list_accepted and p == "norvane.accepted")}
        before = kept()
        result = run()
        out = text(result)
        check(what + " is refused with " + key + " (exit 1)",
              result.returncode == 1 and all(m in out for m in message), out)
        check("... with the game folder unchanged", kept() == before,
              str(sorted(set(kept().items()) ^ set(before.items()))[:4]))

    changed = dict(files, **{"readme.txt": b"Kaldra, ama zararli\r\n"})
    put_client(changed)
    lines = v1_list.replace(b"readme.txt\t8\t%s" % ("%08X" % zlib.crc32(files["readme.txt"])).encode(),
                            b"readme.txt\t%d\t%s" % (len(changed["readme.txt"]),
                                                     ("%08X" % zlib.crc32(changed["readme.txt"])).encode()))
    open(listfile, "wb").write(lines)
    attack("a changed file with its CRC and list line recomputed", "NV_LIST_FORGED", "imzası doğrulanamadı")

    same_crc = dict(files, **{"data/harita.pak": forge_crc(
        files["data/harita.pak"][:1000] + b"X" * 1000 + files["data/harita.pak"][2000:],
        zlib.crc32(files["data/harita.pak"]))})
    put_client(same_crc)
    open(listfile, "wb").write(v1_list)
    os.remove(os.path.join(game, "data", "harita.pak"))  # a player who needs it: a damaged or new install
    attack("a changed file of the same size and CRC-32 under the honest list", "NV_HASH_MISMATCH", "SHA-256",
           "data/harita.pak")

    put_client(changed)
    crclist()
    attack("an unsigned list", "NV_LIST_UNSIGNED", "imzasız")

    sign("yabanci")
    attack("a list signed by another key", "NV_LIST_FORGED", "imzası doğrulanamadı")

    body = open(listfile, "rb").read().rpartition(b"#nvsignature\t")[0]
    open(listfile, "wb").write(referee_sign(keys["yabanci"][0], body))
    attack("a list the referee signed with a wrong key", "NV_LIST_FORGED", "imzası doğrulanamadı")

    expired = sign("eski", "--expires", "2020-01-01")
    check("crclist warns that the expiry is past", "UYARI" in text(expired), text(expired))
    attack("an expired list", "NV_LIST_EXPIRED", "süresi dolmuş", "2020-01-01T23:59:59Z")

    # --- an honest update, then a replay of the older list ------------------------------------------------
    files2 = dict(files, **{"readme.txt": b"Kaldra 2\r\n"})
    put_client(files2)
    sign("eski", "--version", "5")
    v5_list = open(listfile, "rb").read()
    honest = run()
    check("the next honest update goes through", honest.returncode == 0 and
          {p: d for p, d in folder().items() if p in files2} == files2, text(honest))
    put_client(files)
    open(listfile, "wb").write(v1_list)
    attack("a replayed older signed list", "NV_LIST_ROLLBACK", "sürüm 1")
    put_client(files2)
    open(listfile, "wb").write(v5_list)
    lower = crclist("--sign", winpath(os.path.join(work, "eski.key")), "--version", "3")
    check("crclist refuses a version not above the list it replaces (exit 1)",
          lower.returncode == 1 and "büyük olmalı" in text(lower), text(lower))

    # --- self-update: the signed list names the patcher; a swapped exe is refused -------------------------
    newer = os.path.join(work, "KaldraPatcher2.exe")
    built = build(newer, "--title", "Kaldra 2", "--update-key", winpath(os.path.join(work, "eski.pub")),
                  "--update-key", winpath(os.path.join(work, "yeni.pub")))
    check("build embeds two keys for a rotation", built.returncode == 0, text(built))
    new_bytes = open(newer, "rb").read()
    files3 = dict(files2, **{"KaldraPatcher.exe": new_bytes})
    put_client(files3)
    sign()
    swapped = bytearray(new_bytes)
    swapped[len(swapped) // 2: len(swapped) // 2 + 64] = b"\xCC" * 64
    swapped = forge_crc(bytes(swapped), zlib.crc32(new_bytes))
    open(os.path.join(client, "KaldraPatcher.exe"), "wb").write(swapped)
    config("nv_patcher_url=KaldraPatcher.exe\nnv_patcher_crc32=%08X" % zlib.crc32(swapped))
    attack("a swapped self-update exe with a matching CRC in the config", "NV_HASH_MISMATCH", "SHA-256",
           "KaldraPatcher.exe", list_accepted=True)
    open(os.path.join(client, "KaldraPatcher.exe"), "wb").write(new_bytes)
    config("nv_patcher_url=KaldraPatcher.exe\nnv_patcher_crc32=00000000")  # not believed either way
    updated = run()
    check("the honest new patcher is installed from the signed list", updated.returncode == 0 and
          open(os.path.join(game, "KaldraPatcher.exe"), "rb").read() == new_bytes, text(updated))

    # --- rotation: the new patcher takes lists signed by the new key, also when the referee signs ---------
    files4 = dict(files3, **{"readme.txt": b"Kaldra 4\r\n"})
    put_client(files4)
    sign("yeni")
    rotated = run()
    check("after a rotation a list signed by the new key goes through", rotated.returncode == 0 and
          folder()["readme.txt"] == files4["readme.txt"], text(rotated))
    files5 = dict(files4, **{"readme.txt": b"Kaldra 5\r\n"})
    put_client(files5)
    crclist("--sign", winpath(os.path.join(work, "yeni.key")))
    body = open(listfile, "rb").read().rpartition(b"#nvsignature\t")[0]
    open(listfile, "wb").write(referee_sign(keys["yeni"][0], body))
    by_referee = run()
    check("a list the referee signed with the right key goes through", by_referee.returncode == 0 and
          folder()["readme.txt"] == files5["readme.txt"], text(by_referee))
finally:
    shutil.rmtree(work, ignore_errors=True)

print("%d check(s) failed" % failures if failures else "all checks passed")
sys.exit(1 if failures else 0)
