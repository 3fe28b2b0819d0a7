"""report_page.py VORNA SOURCES FOLDER CHROMIUM: pages of vorna report in a browser: what they show is what vorna replay and its
histories say; texts of users stay texts; nothing is asked for from elsewhere."""
import base64
import json
import shutil
import subprocess
import sys
from pathlib import Path

from browser import Browser

vorna, sources, folder, chromium = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3]).resolve(), sys.argv[4]
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir(parents=True)


def run(*arguments):
    done = subprocess.run([vorna, *arguments], cwd=folder, capture_output=True)
    assert done.returncode == 0, done
    return done.stdout


def timing(recording):
    return json.loads(run('replay', recording, '--timing=json', '--repeat', '1'))['calls']


def check_known_page():
    """The image, every call's numbers, the history of a pixel, and the document are those of the recording."""
    recording = str(sources / 'recordings/crystals.json')
    run('report', recording, '-o', 'crystals.html', '--note', 'first line\nsecond line')
    page = Browser(chromium, str(folder / 'crystals.html'))
    try:
        run('replay', recording, '--color', 'crystals.png')
        png = page.value('document.querySelector("#stack img").src.split(",")[1]')
        assert base64.b64decode(png) == (folder / 'crystals.png').read_bytes()
        calls = page.value('calls')
        costs = timing(recording)
        assert [page.value('kinds')[kind] for kind in calls['kind']] == [cost['kind'] for cost in costs]
        for key in ('points', 'colors', 'depths'):
            wanted = key if key == 'points' else key + '_changed'
            assert calls[key] == [cost[wanted] for cost in costs], key
        assert all(time >= 0 for time in calls['microseconds']) and sum(calls['microseconds']) > 0

        # The pixel of the story in docs/recordings.md, under the pointer.
        pixel = json.loads(run('replay', recording, '--pixel', '40,31', '--json'))['pixels'][0]
        box = page.value('(({left, top}) => [left, top, zoom])(element("stack").getBoundingClientRect())')
        page.mouse('mouseMoved', box[0] + 40.5 * box[2], box[1] + 31.5 * box[2])
        text = page.value('element("history").innerText')
        for wanted in ('Pixel 40,31', '#61b0d0 at depth 23488', '#61b0d0 over #181c28, depth 65535 to 23488',
                       'refused: depth (11843 behind, 35331 against 23488)'):
            assert wanted in text, text
        rows = page.value('[...document.querySelectorAll("#history tr")].map((row) => +row.cells[0].innerText)')
        assert rows == [event['call'] for event in pixel['events']], rows

        # A click keeps the pixel; a row of its history chooses the call, whose bounds hold the pixel.
        page.click(box[0] + 40.5 * box[2], box[1] + 31.5 * box[2])
        page.mouse('mouseMoved', box[0] + 0.5 * box[2], box[1] + 0.5 * box[2])
        assert 'Pixel 40,31' in page.value('element("history").innerText')
        page.value('document.querySelectorAll("#history tr")[2].click()')
        assert page.value('chosen') == 3
        assert 'call 3: draw_dci_gouraud_polytriangle' in page.value('element("details").innerText')
        x, y, width, height = page.value('bounds_of(3)')
        assert x <= 40 < x + width and y <= 31 < y + height
        page.screenshot(folder / 'crystals-page.png')

        page.value('element("search").value = "clear"; element("search").dispatchEvent(new Event("input"))')
        assert page.value('order') == [1]
        file = page.value('element("file").textContent')
        assert base64.b64decode(file) == Path(recording).read_bytes()
        assert page.value('element("download").download') == 'crystals.json'
        assert page.value('document.querySelector(".note").textContent') == 'first line\nsecond line'
        assert page.problems() == [], page.problems()
    finally:
        page.close()


def check_texts():
    """Names and notes that would end elements or run scripts."""
    wild = '"&<!--</script><script>document.title="run"</script><img src=x onerror="document.title=\'run\'">'
    name = wild.replace('/', '∕') + '.json'
    (folder / '<').mkdir()
    path = '</script>' + name
    (folder / '<' / ('script>' + name)).write_bytes((sources / 'recordings/glass.json').read_bytes())
    run('report', path, '-o', 'wild.html', '--note', wild, '--repeat', '0')
    page = Browser(chromium, str(folder / 'wild.html'))
    try:
        assert page.value('document.querySelector("h1").textContent') == path
        assert page.value('document.querySelector(".note").textContent') == wild
        assert page.value('document.title') == path
        assert page.value('element("download").download') == 'script>' + name
        assert page.value('document.scripts.length') == 4 and page.value('document.images.length') == 3
        assert page.problems() == [], page.problems()
        # The policy keeps scripts from being added, so that a text that got through would not run either.
        page.value('document.body.insertAdjacentHTML("beforeend", "<img src=data:, onerror=document.title=1>")')
        page.value('new Promise((done) => setTimeout(done, 200))')
        assert page.value('document.title') == path
    finally:
        page.close()
    first = (folder / 'wild.html').read_bytes()
    run('report', path, '-o', 'wild.html', '--note', wild, '--repeat', '0')
    assert (folder / 'wild.html').read_bytes() == first, 'two runs write different pages'


def check_palette():
    recording = str(sources / 'recordings/shapes-palette.json')
    run('report', recording, '-o', 'palette.html', '--area', '60,60,30x20')
    page = Browser(chromium, str(folder / 'palette.html'))
    try:
        pixel = json.loads(run('replay', recording, '--pixel', '70,70', '--json'))['pixels'][0]
        page.value('show_history(70, 70)')
        assert 'index ' + str(pixel['last']['index']) in page.value('element("history").innerText')
        page.value('show_history(59, 70)')
        assert page.value('element("history").innerText') == "This pixel's history is not recorded."
        page.screenshot(folder / 'palette-page.png')
        assert page.problems() == [], page.problems()
    finally:
        page.close()


def check_large():
    """60,000 calls: the page stays small and opens, and says what is left out."""
    calls = [{'call': 'draw_window', 'rectangle': [0, 999, 0, 799], 'color': [250, 250, 240]}]
    for i in range(59999):
        x, y, side = i * 7919 % 980, i * 104729 % 780, 3 + i % 17
        calls.append({'call': 'draw_2di_polytriangle', 'points': [[x, y, i], [x + side, y, i], [x, y + side, i]],
                      'rendition': {'face': {'color': [i % 256, i * 3 % 256, i * 7 % 256]}}})
    document = {'picture': 1, 'window': {'width': 1000, 'height': 800}, 'buffer_depth': 0, 'calls': calls}
    (folder / 'large.json').write_text(json.dumps(document))
    run('report', 'large.json', '-o', 'large.html', '--thumbnails', '500', '--area', '400,400,20x20')
    assert (folder / 'large.html').stat().st_size < 10_000_000, (folder / 'large.html').stat()
    page = Browser(chromium, str(folder / 'large.html'))
    try:
        assert 'The 500 calls that changed the most pixels have one; for ' in page.value('element("limits").innerText')
        assert 'Histories are recorded for 400 pixels' in page.value('element("limits").innerText')
        assert page.value('element("found").textContent') == '60,000 calls'
        assert page.value('document.querySelectorAll(".row").length') < 60
        page.value('choose(59999, true)')
        page.wait('document.querySelector(".row.chosen")')
        assert page.value('document.querySelector(".row.chosen").firstChild.textContent') == '59999'
        page.screenshot(folder / 'large-page.png')
        assert page.value('element("download").download') == 'large.json.gz'
        assert page.problems() == [], page.problems()
    finally:
        page.close()
    print('a page of', (folder / 'large.html').stat().st_size, 'bytes for 60000 calls')


check_known_page()
check_texts()
check_palette()
check_large()
