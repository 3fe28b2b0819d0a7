"""compare_reports.py VORNA FOLDER: reports of vorna compare about files with unusual names, as programs of others read them, and the
commands of the page, run by a shell."""
import html.parser
import json
import random
import shutil
import struct
import subprocess
import sys
import zlib
from pathlib import Path
from xml.etree import ElementTree

vorna, folder = sys.argv[1], Path(sys.argv[2])
shutil.rmtree(folder, ignore_errors=True)
before, after = folder / "it's before", folder / '-after <&"'
width, height = 16, 12


def write_png(path, seed, changed=0):
    pixels = random.Random(seed).randbytes(3 * width * height)
    middle = 3 * (width * 6 + 8)
    pixels = pixels[:middle] + bytes([pixels[middle] ^ changed]) + pixels[middle + 1:]
    rows = b''.join(b'\0' + pixels[3 * width * y:3 * width * (y + 1)] for y in range(height))

    def chunk(kind, content):
        return struct.pack('>I', len(content)) + kind + content + struct.pack('>I', zlib.crc32(kind + content))

    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', width, height, 8, 2, 0, 0, 0)) +
                     chunk(b'IDAT', zlib.compress(rows)) + chunk(b'IEND', b''))


def compare(*options):
    return subprocess.run([vorna, 'compare', before.name, './' + after.name, *options], cwd=folder, capture_output=True)


class Page(html.parser.HTMLParser):
    """What stands in headings and commands, and what the page asks for."""

    def __init__(self):
        super().__init__()
        self.headings, self.commands, self.sources, self.open = [], [], [], []

    def handle_starttag(self, tag, attributes):
        if tag not in ('meta', 'img', 'input'):
            self.open.append(tag)
        if tag in ('h2', 'pre'):
            (self.headings if tag == 'h2' else self.commands).append('')
        self.sources += [value for name, value in attributes if name in ('src', 'href')]
        assert tag not in ('b', 'script', 'link', 'iframe'), tag

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        if self.open and self.open[-1] in ('h2', 'pre'):
            (self.headings if self.open[-1] == 'h2' else self.commands)[-1] += data


names = {'plain.png': 'same', "it's.png": 'different', 'a <b>&amp;"c".png': 'different', '$(touch x) `touch x`;#.PNG': 'different',
         '-rf.png': 'missing', 'new/ä 漢/ümläut.png': 'extra', 'sub/-n.png': 'near', '\\n.png': 'missing'}
wild = {'line\nend \x1b[31m.png': 'different', b'\xff\xfe.png'.decode('utf-8', 'surrogateescape'): 'different'}
for seed, (name, verdict) in enumerate({**names, **wild}.items()):
    if verdict != 'extra':
        write_png(before / name, seed)
    if verdict != 'missing':
        write_png(after / name, seed, {'same': 0, 'extra': 0, 'near': 1, 'different': 9}[verdict])
(after / 'notes.txt').write_text('not an image')

done = compare('--tolerance', '1,1', '--json', 'r.json', '--junit', 'r.xml', '--html', 'r.html')
assert done.returncode == 1, done
assert b'\x1b' not in done.stdout and b'\xff' not in done.stdout and len(done.stdout.splitlines()) == 10, done.stdout
done.stdout.decode()

report = json.loads((folder / 'r.json').read_text('ascii'))
found = {image['name']: image['verdict'] for image in report['images']}
assert {name: found[name] for name in names} == names, found
assert found['line\nend \x1b[31m.png'] == found['\ufffd\ufffd.png'] == 'different', found
assert report['totals'] == {'same': 1, 'near': 1, 'different': 5, 'missing': 2, 'extra': 1, 'unreadable': 0}, report['totals']
assert report['other_files'] == 1 and report['tolerance'] == {'difference': 1, 'pixels': 1} and report['same'] is False
changed = next(image for image in report['images'] if image['name'] == "it's.png")
assert changed['pixels_different'] == 1 and changed['columns'] == [8, 8] and 0.9 < changed['ssim'] < 1 < changed['psnr'], changed

suite = ElementTree.parse(folder / 'r.xml').getroot().find('testsuite')
cases = {case.get('name'): len(list(case)) for case in suite}
assert {name: cases[name] for name in names} == {n: int(v not in ('same', 'near')) for n, v in names.items()}, cases
assert suite.get('tests') == '10' and suite.get('failures') == '8' and suite.get('errors') == '0', suite.attrib

page = Page()
page.feed((folder / 'r.html').read_text('utf-8'))
page.close()
assert set(names) - {'plain.png'} <= set(page.headings), page.headings
assert page.sources and all(source.startswith('data:image/png;base64,') for source in page.sources), page.sources
for name in wild:
    shutil.copyfile(after / name, before / name)
for command in page.commands[1:]:
    subprocess.run(['sh', '-ec', command], cwd=folder, check=True)
assert not (folder / 'x').exists()
assert compare().returncode == 0, compare().stdout

# A file that cannot be read is an error in every report, and the status says it.
(after / "it's.png").write_bytes(b'GIF89a')
done = compare('--junit', 'r.xml', '--html', 'r.html')
suite = ElementTree.parse(folder / 'r.xml').getroot().find('testsuite')
assert done.returncode == 2 and suite.get('errors') == '1' and b'1 unreadable' in done.stdout, done
for count in ('1', '3'):
    assert compare('--threads', count).stdout == done.stdout
print('reports of', len(names) + len(wild), 'files')
