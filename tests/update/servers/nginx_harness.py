"""nginx serving a folder on 127.0.0.1, as an operator's origin behind a CDN would: for tests and benchmarks.

Everything nginx needs lives in a work folder of the caller's (generated config, pid file, temporary folders,
error log, access log), so it runs beside any system nginx without touching it:

    with Nginx(root, workdir, limit_rate="8m") as server:
        fetch(server.url + "/client/big.bin")
        server.requests()   # one record a request: path, args, range, status, bytes sent, cache-control

limit_rate caps each connection (an nginx size: "8m" is 8 MiB a second), so that parallel connections show.
Around any program: with_servers.py.
"""

import json
import os
import shutil
import signal
import socket
import subprocess
import time

START_TIMEOUT = 10.0
STOP_TIMEOUT = 10.0

# One JSON object a line; nginx escapes the values itself (escape=json).
LOG_FORMAT = (
    '{"path":"$uri","args":"$args","range":"$http_range","status":$status,"sent":$body_bytes_sent,'
    '"cache_control":"$http_cache_control","pragma":"$http_pragma","user_agent":"$http_user_agent",'
    '"seconds":$request_time}'
)

CONFIG = """daemon off;
worker_processes 2;
pid {work}/nginx.pid;
error_log {work}/error.log warn;
{user}
events {{
    worker_connections 512;
}}
http {{
    log_format nv escape=json '{log_format}';
    access_log {work}/access.log nv;
    client_body_temp_path {work}/tmp/body;
    proxy_temp_path {work}/tmp/proxy;
    fastcgi_temp_path {work}/tmp/fastcgi;
    uwsgi_temp_path {work}/tmp/uwsgi;
    scgi_temp_path {work}/tmp/scgi;
    default_type application/octet-stream;
    types {{
        text/plain txt;
        application/xml xml;
    }}
    sendfile on;
    tcp_nopush on;
    keepalive_requests 100000;
    server {{
        listen 127.0.0.1:{port};
        root {root};
        location / {{
            {limit}
        }}
    }}
}}
"""


def nginx_program():
    found = shutil.which("nginx") or "/usr/sbin/nginx"
    if not os.path.exists(found):
        raise RuntimeError("nginx is not installed (scripts/deps.sh installs nginx-light)")
    return found


def free_port():
    """A port nothing listens on right now. Another program may take it before nginx does: start() retries."""
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def wait_listening(port, process, timeout):
    """True once something accepts on the port; False when the process ends or the time is up."""
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        if process.poll() is not None:
            return False
        try:
            with socket.create_connection(("127.0.0.1", port), timeout=0.5):
                return True
        except OSError:
            time.sleep(0.05)
    return False


class Nginx:
    def __init__(self, root, workdir, limit_rate=None):
        self.root = os.path.realpath(root)
        self.work = os.path.realpath(workdir)
        self.limit_rate = limit_rate
        self.port = None
        self._process = None

    @property
    def url(self):
        return "http://127.0.0.1:%d" % self.port

    @property
    def access_log(self):
        return os.path.join(self.work, "access.log")

    def start(self):
        for sub in ("body", "proxy", "fastcgi", "uwsgi", "scgi"):
            os.makedirs(os.path.join(self.work, "tmp", sub), exist_ok=True)
        # As root the workers would drop to "nobody", which may not read a test's private folders.
        user = "user root;" if os.geteuid() == 0 else ""
        limit = "limit_rate %s;" % self.limit_rate if self.limit_rate else ""
        for _ in range(3):
            self.port = free_port()
            conf = os.path.join(self.work, "nginx.conf")
            with open(conf, "w") as f:
                f.write(
                    CONFIG.format(
                        work=self.work, user=user, log_format=LOG_FORMAT, port=self.port, root=self.root, limit=limit
                    )
                )
            errors = open(os.path.join(self.work, "stderr.log"), "ab")
            self._process = subprocess.Popen(
                [nginx_program(), "-c", conf, "-p", self.work, "-e", os.path.join(self.work, "error.log")],
                stdin=subprocess.DEVNULL,
                stdout=errors,
                stderr=errors,
                start_new_session=True,  # a Ctrl-C meant for the test run reaches us, and we stop nginx
            )
            errors.close()
            if wait_listening(self.port, self._process, START_TIMEOUT):
                return self
            self.stop()
        raise RuntimeError("nginx did not start; see %s" % os.path.join(self.work, "error.log"))

    def stop(self):
        if self._process is None:
            return
        if self._process.poll() is None:
            self._process.send_signal(signal.SIGTERM)
            try:
                self._process.wait(STOP_TIMEOUT)
            except subprocess.TimeoutExpired:
                os.killpg(self._process.pid, signal.SIGKILL)
                self._process.wait(STOP_TIMEOUT)
        self._process = None

    def __enter__(self):
        return self.start()

    def __exit__(self, *exc):
        self.stop()

    def requests(self):
        """The access log's records so far, oldest first."""
        if not os.path.exists(self.access_log):
            return []
        with open(self.access_log, encoding="utf-8") as f:
            return [json.loads(line) for line in f if line.strip()]
