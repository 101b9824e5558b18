"""A server for VM packs on the loopback interface, packs for it, and the build options that fetch them."""
import contextlib
import http.server
import io
import threading
import zipfile


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def do_GET(self):
        with contextlib.suppress(BrokenPipeError, ConnectionResetError):
            answer = self.server.answers.get(self.path)
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


@contextlib.contextmanager
def serve(hold=lambda: None):
    """A server; `answers` has the bytes, or a function of the handler, for each path, and `url` its address. `hold` is
    called between headers and bytes."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.hold = hold
    server.answers = {}
    server.url = f"http://127.0.0.1:{server.server_port}"
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
