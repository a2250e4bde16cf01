"""A web server that misbehaves on request, for the update tests and benchmarks.

It serves the files of one folder over HTTP/1.1 (keep-alive, a single byte range answered with 206 and its
Content-Range, 416 for a range past the end) and, when a request's path starts with fault segments, breaks the
response the way bad networks, bad servers and bad CDNs do:

    /~norange/FILE          200 and the whole file: the Range header is ignored
    /~cut=N/FILE            the full Content-Length declared, the connection closed after N body bytes
    /~corrupt=OFFSET/FILE   the byte at file offset OFFSET inverted (wrong bytes, right length)
    /~status=CODE/FILE      that status with a short text body (404, 500, 503...)
    /~stall=S/FILE          nothing at all for S seconds (at most 120), then the connection closed
    /~stall=S@N/FILE        the head and N body bytes, then nothing for S seconds, then closed
    /~badrange/FILE         206 for the asked range moved one byte on (Content-Range and bytes agree)
    /~crange=TEXT/FILE      206 with "Content-Range: TEXT" and the asked bytes (TEXT percent-encoded, "/" as %2F)
    /~redirect=N/FILE       N redirects (302, a path on this server) before the file
    /~loop/FILE             a redirect to the very same address, for ever
    /~location=URL/FILE     a 302 to URL (percent-encoded like TEXT), such as ftp://... or another server
    /~endless/FILE          200 with a chunked body that never ends (for at most 120 s, or until the client goes)
    /~length=N/FILE         "Content-Length: N" declared whatever the file holds; its bytes sent, then closed
    /~chunked/FILE          the body in chunks, no Content-Length
    /~close/FILE            no Content-Length: the body ends when the connection closes
    /~rate=B/FILE           the body at B bytes a second
    /~times=N/...           the faults of this path only for its first N requests; later ones are served plainly

Faults combine (/~times=2/~status=503/FILE). What follows the fault segments names a file under the root,
percent-decoded as UTF-8. Query strings are ignored (callers add cache-busting ones).

GET /_log answers the request log as JSON lines (/_log?clear=1 empties it afterwards). Each record holds the
path as asked and its query, the file, the Range and Cache-Control headers, the status and the body bytes
sent, so a test can count what was fetched. The same records go to a file when one is given.

Use it from Python (FaultServer(root).start(), .url, .requests(), .stop(), or as a context manager), or around
any program with with_servers.py.
"""

import http.server
import json
import os
import socket
import ssl
import threading
import time
import urllib.parse

MAX_WAIT = 120.0  # every stall and endless body ends by itself after this long
PIECE = 64 * 1024
ENDLESS_PIECE = bytes(i & 0xFF for i in range(PIECE))


class Fault:
    """The fault segments of one request path, parsed."""

    def __init__(self):
        self.norange = False
        self.cut = None
        self.corrupt = None
        self.status = None
        self.stall = None
        self.stall_at = None
        self.badrange = False
        self.crange = None
        self.redirect = None
        self.loop = False
        self.location = None
        self.endless = False
        self.length = None
        self.chunked = False
        self.close = False
        self.rate = None
        self.times = None

    def active(self):
        return any(v not in (None, False) for k, v in vars(self).items() if k != "times")


def split_faults(path):
    """('/~cut=5/a/b.bin') -> (Fault, ['~cut=5'], 'a/b.bin'), or None for a segment it does not know."""
    fault = Fault()
    segments = path.lstrip("/").split("/")
    used = []
    while segments and segments[0].startswith("~"):
        seg = segments.pop(0)
        used.append(seg)
        name, _, value = seg[1:].partition("=")
        try:
            if name == "norange":
                fault.norange = True
            elif name == "cut":
                fault.cut = int(value)
            elif name == "corrupt":
                fault.corrupt = int(value or "0")
            elif name == "status":
                fault.status = int(value)
            elif name == "stall":
                seconds, _, at = value.partition("@")
                fault.stall = min(float(seconds), MAX_WAIT)
                fault.stall_at = int(at) if at else None
            elif name == "badrange":
                fault.badrange = True
            elif name == "crange":
                fault.crange = urllib.parse.unquote(value)
            elif name == "redirect":
                fault.redirect = int(value)
            elif name == "loop":
                fault.loop = True
            elif name == "location":
                fault.location = urllib.parse.unquote(value)
            elif name == "endless":
                fault.endless = True
            elif name == "length":
                fault.length = int(value)
            elif name == "chunked":
                fault.chunked = True
            elif name == "close":
                fault.close = True
            elif name == "rate":
                fault.rate = max(1, int(value))
            elif name == "times":
                fault.times = int(value)
            else:
                return None
        except ValueError:
            return None
    return fault, used, urllib.parse.unquote("/".join(segments))


def parse_range(header, size):
    """A single 'bytes=' range against a file of `size` bytes: (first, last), 'unsatisfiable', or None (ignore)."""
    if not header:
        return None
    unit, _, spec = header.partition("=")
    if unit.strip().lower() != "bytes" or "," in spec:
        return None  # several ranges or another unit: answering 200 with the whole file is allowed
    first, dash, last = spec.strip().partition("-")
    if not dash:
        return None
    try:
        if first == "":
            n = int(last)  # the last n bytes
            if n <= 0:
                return "unsatisfiable"
            return (max(0, size - n), size - 1) if size else "unsatisfiable"
        a = int(first)
        b = int(last) if last else size - 1
    except ValueError:
        return None
    if a < 0 or b < a:
        return None
    if a >= size:
        return "unsatisfiable"
    return (a, min(b, size - 1))


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    server_version = "NvFault/1"
    timeout = 30  # an idle keep-alive connection frees its thread after this long

    def log_message(self, format, *args):  # the request log below replaces the console noise
        pass

    def do_GET(self):
        self.sent = 0
        self.status = 0
        parsed = urllib.parse.urlsplit(self.path)
        self.record = {
            "path": parsed.path,
            "query": parsed.query,
            "range": self.headers.get("Range"),
            "cache_control": self.headers.get("Cache-Control"),
            "pragma": self.headers.get("Pragma"),
            "user_agent": self.headers.get("User-Agent"),
        }
        try:
            if parsed.path == "/_log":
                self.answer_log(parsed.query)
            else:
                self.answer(parsed.path)
        except (ConnectionError, socket.timeout, ssl.SSLError, OSError):
            self.close_connection = True
        finally:
            if parsed.path != "/_log":
                self.record["status"] = self.status
                self.record["sent"] = self.sent
                self.server.owner.add_record(self.record)

    # --- answers ---------------------------------------------------------------------------------------

    def answer_log(self, query):
        body = "".join(json.dumps(r) + "\n" for r in self.server.owner.requests()).encode()
        if "clear=1" in query:
            self.server.owner.clear_log()
        self.send_simple(200, body, "application/x-ndjson")

    def answer(self, path):
        split = split_faults(path)
        if split is None:
            return self.send_simple(400, b"unknown fault\n")
        fault, used, rel = split
        self.record["faults"] = "/".join(used)
        self.record["file"] = rel
        if fault.times is not None and self.server.owner.count(path) > fault.times:
            fault = Fault()  # the fault has been shown often enough: serve plainly from now on

        if fault.stall is not None and fault.stall_at is None:
            self.server.owner.stop_event.wait(fault.stall)
            self.close_connection = True
            return
        if fault.loop:
            return self.send_redirect(self.path)
        if fault.location is not None:
            return self.send_redirect(fault.location)
        if fault.redirect:
            rest = [s for s in used if not s.startswith("~redirect=")]
            if fault.redirect > 1:
                rest.insert(0, "~redirect=%d" % (fault.redirect - 1))
            target = "/" + "/".join(rest + [urllib.parse.quote(rel)])
            return self.send_redirect(target)
        if fault.status is not None:
            return self.send_simple(fault.status, ("status %d\n" % fault.status).encode())

        full = self.server.owner.file_path(rel)
        if full is None:
            return self.send_simple(404, b"not found\n")
        size = os.path.getsize(full)
        with open(full, "rb") as f:
            self.send_file(f, size, fault)

    def send_file(self, f, size, fault):
        wanted = None if fault.norange else parse_range(self.headers.get("Range"), size)
        if wanted == "unsatisfiable":
            return self.send_simple(416, b"", extra={"Content-Range": "bytes */%d" % size})
        if wanted is None:
            status, first, count = 200, 0, size
        else:
            status, first, count = 206, wanted[0], wanted[1] - wanted[0] + 1
            if fault.badrange and count < size:
                first = first + 1 if first + count < size else first - 1
        self.send_response(status)
        self.status = status
        self.send_header("Accept-Ranges", "bytes")
        if status == 206:
            crange = "bytes %d-%d/%d" % (first, first + count - 1, size)
            self.send_header("Content-Range", fault.crange if fault.crange is not None else crange)
        framing = "length"
        if fault.endless or fault.chunked:
            framing = "chunked"
            self.send_header("Transfer-Encoding", "chunked")
        elif fault.close:
            framing = "close"
            self.send_header("Connection", "close")
            self.close_connection = True
        else:
            declared = fault.length if fault.length is not None else count
            self.send_header("Content-Length", str(declared))
            if declared != count:
                self.close_connection = True
        self.end_headers()

        limit = count if fault.cut is None else min(count, fault.cut)
        if fault.endless:
            limit = None
        deadline = time.monotonic() + MAX_WAIT
        started = time.monotonic()
        stop = self.server.owner.stop_event
        offset = first
        while limit is None or self.sent < limit:
            if stop.is_set() or time.monotonic() > deadline:
                break
            if fault.stall_at is not None and self.sent >= fault.stall_at:
                stop.wait(fault.stall)
                break
            n = PIECE if limit is None else min(PIECE, limit - self.sent)
            if fault.stall_at is not None:
                n = min(n, fault.stall_at - self.sent) or n
            if fault.rate is not None:
                n = min(n, max(1, fault.rate // 10))
            if limit is None:
                data = ENDLESS_PIECE[:n]
            else:
                f.seek(offset)
                data = f.read(n)
                if not data:
                    break
                if fault.corrupt is not None and offset <= fault.corrupt < offset + len(data):
                    k = fault.corrupt - offset
                    data = data[:k] + bytes([data[k] ^ 0xFF]) + data[k + 1 :]
            self.write_body(data, framing)
            self.sent += len(data)
            offset += len(data)
            if fault.rate is not None:
                ahead = started + self.sent / fault.rate - time.monotonic()
                if ahead > 0:
                    stop.wait(ahead)

        complete = limit is not None and self.sent == limit and limit == count
        if framing == "chunked" and complete and fault.stall is None:
            self.wfile.write(b"0\r\n\r\n")
        elif not complete or fault.stall is not None or fault.cut is not None:
            self.close_connection = True  # a cut body: the client sees a clean end before the promised bytes
        self.wfile.flush()

    def write_body(self, data, framing):
        if framing == "chunked":
            self.wfile.write(b"%x\r\n" % len(data) + data + b"\r\n")
        else:
            self.wfile.write(data)

    def send_simple(self, status, body, content_type="text/plain", extra=None):
        self.send_response(status)
        self.status = status
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        for k, v in (extra or {}).items():
            self.send_header(k, v)
        self.end_headers()
        self.wfile.write(body)
        self.sent = len(body)

    def send_redirect(self, location):
        self.send_response(302)
        self.status = 302
        self.send_header("Location", location)
        self.send_header("Content-Length", "0")
        self.end_headers()


class _Server(http.server.ThreadingHTTPServer):
    daemon_threads = True  # a stalled or endless answer never holds up stop()
    request_queue_size = 64


class FaultServer:
    """The server on 127.0.0.1 and a free port, in a thread of this process."""

    def __init__(self, root, log_path=None, tls=None):
        self.root = os.path.realpath(root)
        self.log_path = log_path
        self.tls = tls  # (certificate file, key file) for https
        self.stop_event = threading.Event()
        self._lock = threading.Lock()
        self._records = []
        self._counts = {}
        self._httpd = None
        self._thread = None

    @property
    def port(self):
        return self._httpd.server_address[1]

    @property
    def url(self):
        return "%s://127.0.0.1:%d" % ("https" if self.tls else "http", self.port)

    def start(self):
        self._httpd = _Server(("127.0.0.1", 0), Handler)  # port 0: the system picks a free one, no race
        self._httpd.owner = self
        if self.tls:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(*self.tls)
            self._httpd.socket = context.wrap_socket(self._httpd.socket, server_side=True)
        self._thread = threading.Thread(target=self._httpd.serve_forever, kwargs={"poll_interval": 0.1})
        self._thread.daemon = True
        self._thread.start()
        return self

    def stop(self):
        if self._httpd is None:
            return
        self.stop_event.set()
        self._httpd.shutdown()
        self._httpd.server_close()
        self._thread.join(5)
        self._httpd = None

    def __enter__(self):
        return self.start()

    def __exit__(self, *exc):
        self.stop()

    # --- shared state, guarded by one lock ----------------------------------------------------------------

    def count(self, path):
        """Counts one more request of this path and returns the count."""
        with self._lock:
            self._counts[path] = self._counts.get(path, 0) + 1
            return self._counts[path]

    def add_record(self, record):
        with self._lock:
            self._records.append(record)
            if self.log_path:
                with open(self.log_path, "a", encoding="utf-8") as f:
                    f.write(json.dumps(record) + "\n")

    def requests(self):
        with self._lock:
            return list(self._records)

    def clear_log(self):
        with self._lock:
            self._records.clear()

    def file_path(self, rel):
        """The file under the root that rel names, or None (missing, a folder, or outside the root)."""
        full = os.path.realpath(os.path.join(self.root, rel))
        if not full.startswith(self.root + os.sep) or not os.path.isfile(full):
            return None
        return full
