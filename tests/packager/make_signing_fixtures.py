#!/usr/bin/env python3
"""make_signing_fixtures.py OUT_DIR UNSIGNED_EXE

Signs a copy of a Windows program with real tools, so that reading a signature back is tested against what
signers write and not against bytes the tests make up. OpenSSL makes a code-signing certificate (with Turkish
letters in its name) and a time-stamping authority; osslsigncode signs UNSIGNED_EXE three times:

  signed.exe               no time stamp
  signed-rfc3161.exe       an RFC 3161 time stamp, from `openssl ts -reply` behind a local HTTP server
  signed-authenticode.exe  the older Authenticode countersignature, from `openssl cms -sign` behind the same
                           server (osslsigncode's -t protocol: a base64 request whose content is the signature
                           to countersign, a base64 PKCS #7 answer)

and leaves beside them unsigned.exe, signer.pfx (password "test-parola", 3DES so that any crypt32 imports it) and
expected.txt: the signer's subject and SHA-1 thumbprint as OpenSSL prints them, and for each time-stamped file
the Unix seconds just before and just after it was signed. Every wait is bounded; the server listens on
127.0.0.1 only, on a port the system picks.
"""
import base64
import http.server
import os
import shutil
import subprocess
import sys
import tempfile
import threading
import time

out, unsigned = sys.argv[1], sys.argv[2]
SUBJECT = 'Kaldra Yazılım Test'
PASSWORD = 'test-parola'
TIMEOUT = 60


def run(*args, data=None):
    return subprocess.run(args, input=data, check=True, capture_output=True, timeout=TIMEOUT).stdout


def der_item(data, at):
    """(tag, start of contents, end of contents) of the DER item at `at`."""
    tag, length = data[at], data[at + 1]
    at += 2
    if length & 0x80:
        count = length & 0x7F
        length = int.from_bytes(data[at:at + count], 'big')
        at += count
    if at + length > len(data):
        raise ValueError('DER item runs past the end')
    return tag, at, at + length


def countersigned_content(request):
    """The OCTET STRING inside an Authenticode time-stamp request:
    SEQUENCE { OID, SEQUENCE { OID data, [0] { OCTET STRING } } }."""
    _, at, end = der_item(request, 0)          # TimeStampRequest
    _, _, at = der_item(request, at)            # countersignatureType (skipped)
    _, at, end = der_item(request, at)          # ContentInfo
    _, _, at = der_item(request, at)            # contentType (skipped)
    _, at, end = der_item(request, at)          # [0]
    tag, at, end = der_item(request, at)        # OCTET STRING
    if tag != 0x04:
        raise ValueError('no OCTET STRING in the request')
    return request[at:end]


def main():
    os.makedirs(out, exist_ok=True)
    work = tempfile.mkdtemp()
    try:
        build(work)
    finally:
        shutil.rmtree(work, ignore_errors=True)


def build(work):
    p = lambda name: os.path.join(work, name)
    run('openssl', 'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-utf8', '-days', '3650',
        '-subj', f'/CN={SUBJECT}/O=Kaldra Oyun', '-addext', 'extendedKeyUsage=codeSigning',
        '-addext', 'keyUsage=critical,digitalSignature', '-keyout', p('signer.key'), '-out', p('signer.crt'))
    run('openssl', 'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-days', '3650', '-subj', '/CN=Norvane Test TSA',
        '-addext', 'extendedKeyUsage=critical,timeStamping', '-keyout', p('tsa.key'), '-out', p('tsa.crt'))
    run('openssl', 'pkcs12', '-export', '-in', p('signer.crt'), '-inkey', p('signer.key'), '-out',
        os.path.join(out, 'signer.pfx'), '-passout', 'pass:' + PASSWORD, '-certpbe', 'PBE-SHA1-3DES',
        '-keypbe', 'PBE-SHA1-3DES', '-macalg', 'sha1')
    with open(p('ts.cnf'), 'w') as f:
        f.write(f"""[ tsa ]
default_tsa = tsa_config
[ tsa_config ]
serial = {p('tsaserial')}
signer_cert = {p('tsa.crt')}
signer_key = {p('tsa.key')}
signer_digest = sha256
default_policy = 1.2.3.4.1
digests = sha1, sha256, sha384, sha512
accuracy = secs:1
ess_cert_id_alg = sha256
""")
    with open(p('tsaserial'), 'w') as f:
        f.write('01\n')
    fingerprint = run('openssl', 'x509', '-in', p('signer.crt'), '-noout', '-fingerprint', '-sha1').decode()
    thumbprint = fingerprint.strip().split('=', 1)[1].replace(':', '').upper()

    class Authority(http.server.BaseHTTPRequestHandler):
        def do_POST(self):
            body = self.rfile.read(int(self.headers.get('Content-Length', 0)))
            if self.path == '/rfc3161':
                with open(p('query.tsq'), 'wb') as f:
                    f.write(body)
                answer = run('openssl', 'ts', '-reply', '-config', p('ts.cnf'), '-queryfile', p('query.tsq'),
                             '-out', '-')
                kind = 'application/timestamp-reply'
            else:
                with open(p('content.bin'), 'wb') as f:
                    f.write(countersigned_content(base64.b64decode(body)))
                signed = run('openssl', 'cms', '-sign', '-binary', '-nodetach', '-nosmimecap', '-md', 'sha256',
                             '-in', p('content.bin'), '-signer', p('tsa.crt'), '-inkey', p('tsa.key'),
                             '-outform', 'DER')
                answer = base64.b64encode(signed)
                kind = 'application/octet-stream'
            self.send_response(200)
            self.send_header('Content-Type', kind)
            self.send_header('Content-Length', str(len(answer)))
            self.end_headers()
            self.wfile.write(answer)

        def log_message(self, *args):
            pass

    server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Authority)
    server.timeout = TIMEOUT
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = f'http://127.0.0.1:{server.server_address[1]}'
    lines = [f'subject={SUBJECT}', f'thumbprint={thumbprint}']
    try:
        shutil.copyfile(unsigned, os.path.join(out, 'unsigned.exe'))
        for name, stamp in (('signed.exe', []), ('signed-rfc3161.exe', ['-ts', url + '/rfc3161']),
                            ('signed-authenticode.exe', ['-t', url + '/authenticode'])):
            target = os.path.join(out, name)
            if os.path.exists(target):
                os.remove(target)
            before = int(time.time())
            run('osslsigncode', 'sign', '-certs', p('signer.crt'), '-key', p('signer.key'), '-h', 'sha256',
                '-n', 'Kaldra', *stamp, '-in', unsigned, '-out', target)
            after = int(time.time()) + 1
            if stamp:
                lines.append(f'{name}={before} {after}')
    finally:
        server.shutdown()
    with open(os.path.join(out, 'expected.txt'), 'w', encoding='utf-8') as f:
        f.write('\n'.join(lines) + '\n')


main()
