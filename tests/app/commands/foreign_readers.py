"""foreign_readers.py VORNA FOLDER: image files of all formats as the programs of others read them."""
import re
import subprocess
import sys
import zlib
from pathlib import Path

from PIL import Image, ImageChops

vorna, folder = sys.argv[1], Path(sys.argv[2])
failures = []


def expect(is_right, what):
    if not is_right:
        failures.append(what)
        print(what)


def render(name, *options):
    file = folder / name
    drawn = subprocess.run([vorna, 'render', folder / 'grid.obj', '-o', file, *options], capture_output=True, text=True)
    expect(drawn.returncode == 0, f'{name}: {drawn.stderr}')
    return file


def difference(a, b):
    return max(high for low, high in ImageChops.difference(a, b).getextrema())


def unpacked_page(text):
    """The image of a page with two colours, which pdfimages writes without them."""
    palette = bytes.fromhex(re.search(rb'/Indexed /DeviceRGB 1 <([0-9a-f]{12})>', text)[1].decode())
    rows = zlib.decompress(re.search(rb'/Length 6 0 R >>\nstream\n(.*)\nendstream', text, re.DOTALL)[1])
    bits = Image.frombytes('1', (701, 403), b''.join(rows[i + 1:i + 89] for i in range(0, len(rows), 89)))
    return Image.merge('RGB', [bits.point([palette[c]] * 255 + [palette[3 + c]], 'L') for c in range(3)])


# A surface in many colours, some of them behind each other.
side = 40
lines = [f'v {x / side} {y / side} {((x * 7 + y * 13) % 11) / 30}' for y in range(side) for x in range(side)]
for y in range(side - 1):
    for x in range(side - 1):
        a = y * side + x + 1
        lines += [f'f {a} {a + 1} {a + side}', f'f {a + 1} {a + side + 1} {a + side}']
(folder / 'grid.obj').write_text('\n'.join(lines) + '\n')

# Sides that no tile of a file divides.
size = ['--size', '701x403']
looks = {'shaded': [], 'few': ['--shading', 'hidden-line'], 'indexed': ['--colors', '8']}
for look, options in looks.items():
    raw = render('a.raw', *size, *options).read_bytes()
    reference = Image.open(render('reference.ppm', *size, *options)).convert('RGB')
    if look != 'indexed':
        expect(Image.frombytes('RGBA', (701, 403), raw).convert('RGB').tobytes() == reference.tobytes(), f'raw, {look}')
    for compress in ('fast', 'default', 'best'):
        for suffix in ('png', 'tif', 'webp', 'pdf'):
            file = render('a.' + suffix, '--compress', compress, *size, *options)
            if suffix == 'pdf' and look == 'few':
                expect(unpacked_page(file.read_bytes()).tobytes() == reference.tobytes(), f'PDF, {look}, {compress}')
                continue
            if suffix == 'pdf':
                subprocess.run(['pdfimages', '-png', file, folder / 'page'], check=True)
                file = folder / 'page-000.png'
                page = subprocess.run(['pdfinfo', folder / 'a.pdf'], capture_output=True, text=True, check=True).stdout
                expect('Pages:           1\n' in page and re.search(r'525\.75 x 302\.25 pts', page), f'PDF: {page}')
            image = Image.open(file)
            expect(image.size == (701, 403) and difference(image.convert('RGB'), reference) == 0, f'{suffix}, {look}, {compress}')
    image = Image.open(render('a.jpg', *size, *options))
    apart = ImageChops.difference(image.convert('L'), reference.convert('L')).histogram()
    expect(image.format == 'JPEG' and sum(apart[64:]) == 0 and sum(apart[24:]) < 0.02 * 701 * 403, f'JPEG, {look}: {apart}')
    drawn = subprocess.run(['pdftoppm', '-r', '96', folder / 'a.pdf', '-singlefile', folder / 'drawn'], check=True)
    expect(Image.open(folder / 'drawn.ppm').size == (701, 403), 'PDF drawn')

clear = Image.open(render('clear.png', *size, '--background', 'none')).convert('RGBA')
for suffix in ('tif', 'webp'):
    image = Image.open(render('clear.' + suffix, *size, '--background', 'none'))
    expect(image.mode == 'RGBA' and image.tobytes() == clear.tobytes(), f'{suffix} with alpha')
for suffix in ('jpg', 'pdf', 'ppm'):
    refused = subprocess.run([vorna, 'render', folder / 'grid.obj', '-o', folder / ('no.' + suffix), '--background', 'none'],
                             capture_output=True, text=True)
    expect(refused.returncode == 2 and 'expected an opaque image' in refused.stderr, f'{suffix}: {refused.stderr}')

information = subprocess.run(['tiffinfo', folder / 'a.tif'], capture_output=True, text=True)
expect('Tile Width: 256 Tile Length: 256' in information.stdout and not information.stderr, f'{information}')
piped = subprocess.run([vorna, 'render', folder / 'grid.obj', '-o', '-', '--output-format', 'tif', *size], capture_output=True)
render('a.tif', *size)
expect(piped.stdout == (folder / 'a.tif').read_bytes(), 'a TIFF file in a pipe')
print(f'{len(failures)} failures')
sys.exit(1 if failures else 0)
