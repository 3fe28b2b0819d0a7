"""recording_stories.py VORNA SOURCES: the commands of the stories in docs/recordings.md, one after the other in one folder, print
what the page says. Times vary."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

vorna, sources = Path(sys.argv[1]), Path(sys.argv[2])
page = (sources / 'docs/recordings.md').read_text()
start = page.index('\n## A fault, from the CI job to the report\n')
stories = page[start:page.index('\n## ', start + 1)]
blocks = re.findall(r'\n```(\w*)\n(.*?)\n```\n', stories, re.S)
environment = {**os.environ, 'PATH': str(vorna.parent) + os.pathsep + os.environ['PATH']}

with tempfile.TemporaryDirectory() as name:
    folder = Path(name)
    (folder / 'recordings').mkdir()
    (folder / 'expected').mkdir()
    for each in ('crystals', 'quilt', 'shapes'):
        shutil.copy(sources / f'recordings/{each}.json', folder / 'recordings')
        shutil.copy(sources / f'tests/golden/{each}.color.png', folder / f'expected/{each}.png')
    commands = 0
    for (language, text), (answer_language, answer) in zip(blocks, blocks[1:] + [('', '')]):
        if language != 'sh':
            continue
        done = subprocess.run(['bash', '-e', '-c', text], cwd=folder, env=environment, capture_output=True, text=True)
        assert done.returncode == 0, (text, done)
        if answer_language == 'text':
            without_times = [re.sub(r'\d+\.\d s', 'T s', part).strip() for part in (done.stdout, answer)]
            assert without_times[0] == without_times[1], f'{text}\nprints\n{done.stdout}\nbut the page says\n{answer}'
        commands += 1
    assert commands == 5, commands
    assert (folder / 'small.html').stat().st_size > 10_000
print('stories of', commands, 'blocks')
