"""page.py SITE SOURCES CHROMIUM: the page for browsers in a headless Chromium, served as static files. Recordings have the digests of
docs/receipt.json there too; a recording is opened, stepped through and saved; nothing is asked for from elsewhere."""
import functools
import http.server
import json
import sys
import threading
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / 'app/commands'))
from browser import Browser  # noqa: E402

site, sources, chromium = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), sys.argv[3]


class Server(http.server.ThreadingHTTPServer):
    """The site, and below /sources/ the recordings and models of this project."""
    daemon_threads = True


class Handler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map, '.wasm': 'application/wasm', '.mjs': 'text/javascript'}

    def translate_path(self, path):
        path = path.split('?')[0]
        if path == '/favicon.ico':
            return str(site / 'page.css')
        return str(sources / path[9:]) if path.startswith('/sources/') else super().translate_path(path)

    def log_message(self, *_):
        pass


server = Server(('127.0.0.1', 0), functools.partial(Handler, directory=str(site)))
threading.Thread(target=server.serve_forever, daemon=True).start()
address = f'http://127.0.0.1:{server.server_port}/'

GOLDENS = '''(async () => {
  const {openRecording, hash} = await import('/vorna/index.js');
  const found = {};
  for (const name of NAMES) {
    const path = name.includes('/') ? 'tests/golden/' + name : 'recordings/' + name;
    const recording = await openRecording(await (await fetch('/sources/' + path + '.json')).arrayBuffer());
    const {colors, depths} = recording.planes();
    const raw = colors.kind === 'colors' ? colors.bytes.map((_, i, all) => all[i % 2 ? i : i ^ 2]) : colors.bytes;
    found[name + '.color'] = await hash(raw);
    if (depths) {
      found[name + '.depth'] = await hash(depths.bytes);
    }
    recording.close();
  }
  return found;
})()'''


def check_goldens(page):
    expected = json.loads((sources / 'docs/receipt.json').read_text(encoding='utf-8'))['images']
    names = sorted(f'recordings/{path.stem}'[11:] for path in (sources / 'recordings').glob('*.json'))
    names += sorted(f'answers/{path.stem}' for path in (sources / 'tests/golden/answers').glob('*.json'))
    found = page.value(GOLDENS.replace('NAMES', json.dumps(names)))
    wanted = {name: digest for name, digest in expected.items() if name.rsplit('.', 1)[0] in names}
    different = [name for name, digest in wanted.items() if found.get(name) != digest]
    assert len(wanted) > 30 and not different, different
    print(f'{len(wanted)} images of recordings have the digests of docs/receipt.json')


def opened(query):
    page = Browser(chromium, f'{address}index.html?{query}')
    page.wait('["drawn", "failed"].includes(document.body.dataset.state)')
    assert page.value('document.body.dataset.state') == 'drawn', page.value('document.getElementById("message").textContent')
    return page


def digest(page):
    return page.value('document.getElementById("facts").textContent').split('SHA-256 ')[1]


def check_recording():
    page = opened('open=sources/recordings/crystals.json')
    try:
        last = digest(page)
        page.value('(({elements: {call}}) => { call.value = 1; call.dispatchEvent(new Event("input", {bubbles: true})); })'
                   '(document.getElementById("controls"))')
        page.wait(f'!document.getElementById("facts").textContent.includes("{last}")')
        assert page.value('document.getElementById("controls").className') == 'recording'
        assert page.problems() == [], page.problems()
        check_goldens(page)
    finally:
        page.close()


def check_refusal_and_saving():
    page = opened('open=sources/recordings/boat.json')
    try:
        page.value('HTMLAnchorElement.prototype.click = () => {}; window.saved = new Promise((done) => { URL.createObjectURL = (blob) => (done(blob.type + blob.size), "about:blank#"); });'
                   'document.getElementById("download").click()')
        saved = page.value('window.saved')
        assert saved.startswith('image/png') and int(saved[9:]) > 100, saved
        page.value('(() => { const files = new DataTransfer(); files.items.add(new File(["{"], "bad.json"));'
                   'const input = document.getElementById("files"); input.files = files.files;'
                   'input.dispatchEvent(new Event("change")); })()')
        page.wait('document.body.dataset.state === "failed"')
        message = page.value('document.getElementById("message").textContent')
        assert message.startswith('bad.json: '), message
        assert page.problems() == [], page.problems()
    finally:
        page.close()


check_recording()
check_refusal_and_saving()
print('the page draws, steps, saves and refuses')
