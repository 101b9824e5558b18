"""A VM pack and servers on the loopback interface that give it away."""
import contextlib
import hashlib
import http.server
import io
import pathlib
import ssl
import subprocess
import threading
import zipfile

import harness


def archive(files):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w", zipfile.ZIP_DEFLATED) as target:
        for name, content in files.items():
            target.writestr(name, content)
    return data.getvalue()


def vm_pack(folder):
    """The bytes of a pack with a stand-in VM."""
    home = harness.install_vm(pathlib.Path(folder) / "packed").parents[1]
    files = {str(path.relative_to(home)): path.read_bytes() for path in home.rglob("*") if path.is_file()}
    return archive({"vm.zip": archive(files), "vm.properties": "x"})


@contextlib.contextmanager
def serving(content, certificate=None):
    """Answers every request with `content`; gives the address. `certificate` names a folder: the server then speaks
    TLS, with a certificate made there that nobody trusts."""
    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def log_message(self, *_):
            pass

        def do_GET(self):
            self.send_response(200)
            self.send_header("Content-Length", str(len(content)))
            self.end_headers()
            with contextlib.suppress(ConnectionError):
                self.wfile.write(content)

    class Server(http.server.ThreadingHTTPServer):
        def handle_error(self, *_):  # the client hung up
            pass

    server = Server(("127.0.0.1", 0), Handler)
    if certificate:
        key, own = (pathlib.Path(certificate) / name for name in ("key.pem", "certificate.pem"))
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1",
                        "-keyout", key, "-out", own], check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(own, key)
        # Each connection shakes hands when it is first read, in its own thread.
        server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
    thread = threading.Thread(target=server.serve_forever, args=(0.05,))
    thread.start()
    try:
        yield f"{'https' if certificate else 'http'}://127.0.0.1:{server.server_port}"
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


def write_options(app, **options):
    """jvmspecs.properties; "__" in a name stands for each "."."""
    target = app.folder / "Windows" / "jvmspecs" / "jvmspecs.properties"
    target.parent.mkdir(parents=True, exist_ok=True)
    # Where a pack is unpacked.
    (app.folder / "Windows" / "resource").mkdir(exist_ok=True)
    target.write_text("".join(f"build.{key.replace('__', '.')}={value}\n" for key, value in options.items()), "latin-1")


def fetching(url, content):
    """Options with which every start fetches the pack."""
    checksum = "without__vm__dont__search__download__url__md5Checksum__"
    return {"option": "withoutvm", "without__vm__search__option": 12,
            "without__vm__direct__download__url": url + "/jre.vm",
            checksum + "applicable": "true", checksum + "value": hashlib.md5(content).hexdigest()}
