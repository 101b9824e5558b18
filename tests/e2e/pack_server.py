"""A server for VM packs on the loopback interface, packs for it, and the build options that fetch them."""
import contextlib
import http.server
import io
import pathlib
import ssl
import subprocess
import threading
import zipfile

import harness


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def do_GET(self):
        with contextlib.suppress(BrokenPipeError, ConnectionResetError):
            answer = self.server.answers.get(self.path, self.server.answers.get("*"))
            if isinstance(answer, bytes):
                self.begin(len(answer))
                self.server.hold()
                self.wfile.write(answer)
            elif answer is None:
                self.send_error(404)
            else:
                answer(self)

    def begin(self, size=None, status=200, **headers):
        self.send_response(status)
        if size is not None:
            headers["Content-Length"] = size
        for name, value in headers.items():
            self.send_header(name.replace("_", "-"), str(value))
        self.end_headers()


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_):  # the client hung up
        pass


@contextlib.contextmanager
def serve(hold=lambda: None, certificate=None):
    """A server; `answers` has the bytes, or a function of the handler, for each path ("*": for all others), and `url`
    its address. `hold` is called between headers and bytes. `certificate` names a folder: the server then speaks TLS,
    with a certificate made there that nobody trusts."""
    server = Server(("127.0.0.1", 0), Handler)
    server.hold = hold
    server.answers = {}
    server.url = f"{'https' if certificate else 'http'}://127.0.0.1:{server.server_port}"
    if certificate:
        key, own = (pathlib.Path(certificate) / name for name in ("key.pem", "certificate.pem"))
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1",
                        "-keyout", key, "-out", own], check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(own, key)
        # Each connection shakes hands when it is first read, in its own thread.
        server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        yield server
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


def archive(files, method=zipfile.ZIP_DEFLATED):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w", method) as target:
        for name, content in files.items():
            target.writestr(name, content)
    return data.getvalue()


def stand_in_files(folder):
    """The files of a runtime with a stand-in VM, which is made in `folder`: name to bytes."""
    home = harness.install_vm(pathlib.Path(folder) / "packed").parents[1]
    return {str(path.relative_to(home)): path.read_bytes() for path in home.rglob("*") if path.is_file()}


def stand_in_pack(folder):
    return archive({"vm.zip": archive(stand_in_files(folder)), "vm.properties": "x"})


def write_options(app, folder="Windows", **options):
    """jvmspecs.properties; "__" in a name stands for each "."."""
    target = app.folder / folder / "jvmspecs"
    target.mkdir(parents=True, exist_ok=True)
    text = "".join(f"build.{key.replace('__', '.')}={value}\n" for key, value in options.items())
    (target / "jvmspecs.properties").write_text(text)


def without_vm(option, pack, url, digest=None):
    """Options that fetch the pack at `url`, for `pack` see docs/build-options.md; verified when there is a digest."""
    checksum = f"without__vm__{pack}__download__url__md5Checksum__"
    url_key = f"without__vm__{pack.replace('dont__search', 'direct')}__download__url"
    verified = {checksum + "applicable": "true", checksum + "value": digest} if digest else {}
    return {"option": "withoutvm", "without__vm__search__option": option, url_key: url} | verified
