# Posters in parts: the bytes of one command, whoever draws the parts, and whoever dies meanwhile.
import os
import signal
import threading
import time

import pytest

import vorna

SIZE = (1500, 1000)
OPTIONS = ["--edges", "--view=front"]


@pytest.fixture
def drawn(box_file, tmp_path, command, monkeypatch):
    """The file, digest and bytes of the image in one piece; the current folder is a new one."""
    folder = tmp_path / "poster"
    folder.mkdir()
    monkeypatch.chdir(folder)
    digest = command("render", box_file, "-o", tmp_path / "whole.png", f"--size={SIZE[0]}x{SIZE[1]}", "--hash", *OPTIONS).strip()
    return box_file, digest, (tmp_path / "whole.png").read_bytes()


def poster(file, parts=6, **settings):
    return vorna.poster(file, "poster.png", **{"size": SIZE, "parts": parts, "options": OPTIONS,
                                              "command": os.environ["VORNA_COMMAND"], **settings})


def test_parts_of_this_machine_make_the_image_of_one_command(drawn):
    file, digest, whole = drawn
    assert poster(file, workers=2) == digest
    with open("poster.png", "rb") as image:
        assert image.read() == whole
    assert os.listdir() == ["poster.png"]


def test_what_fails_is_told_and_what_is_there_is_kept(drawn, monkeypatch):
    file, digest, _ = drawn
    with pytest.raises(ValueError, match="--size: expected"):
        poster(file, size=(0, 5))
    with pytest.raises(ValueError, match="--light: expected"):
        poster(file, options=["--light=q"])
    os.mkdir("poster.part-3.png")  # this part cannot be written
    with pytest.raises((ValueError, vorna.Error), match="poster.part-3.png"):
        poster(file, workers=1)
    os.rmdir("poster.part-3.png")
    there = len(os.listdir())
    drawn_parts = []
    run = vorna._poster._Processes.run
    monkeypatch.setattr(vorna._poster._Processes, "run", lambda own, words: drawn_parts.append(words) or run(own, words))
    assert poster(file, workers=1) == digest
    assert there > 0 and sum(any(word.startswith("--tile=") for word in words) for words in drawn_parts) == 6 - there


@pytest.mark.parametrize("stage", ["poster.part", "poster.png"])
def test_an_interrupt_leaves_no_unfinished_file(drawn, stage):
    file, _, _ = drawn
    settings = {"size": (8000, 6000), "workers": 1, "parts": 2, "options": ["--supersample=1"]}

    def interrupt():
        # An unfinished file of a part, or of the image, has a longer name than the file.
        while not any(stage in name and not name.endswith(".png") for name in os.listdir()) and not has_ended:
            time.sleep(0.001)
        signal.pthread_kill(threading.main_thread().ident, signal.SIGINT)

    has_ended = []
    timer = threading.Thread(target=interrupt)
    timer.start()
    try:
        with pytest.raises(KeyboardInterrupt):
            poster(file, **settings)
            has_ended.append(True)
            timer.join()
    finally:
        timer.join()
    assert not has_ended, "the interrupt came too late"
    left = set(os.listdir())
    assert left <= {"poster.part-0.png", "poster.part-1.png"} and len(left) == (2 if stage == "poster.png" else 0)
    digest = poster(file, **settings)
    assert len(digest) == 64 and os.listdir() == ["poster.png"]


def test_posters_are_files(drawn):
    for path in ("-", b"-"):
        with pytest.raises(ValueError, match="path: expected a file, found - for standard output"):
            vorna.poster(drawn[0], path, size=SIZE, parts=2, command=os.environ["VORNA_COMMAND"])


@pytest.mark.filterwarnings("ignore")
def test_the_parts_of_a_worker_that_dies_are_drawn_by_another(drawn):
    distributed = pytest.importorskip("distributed")
    file, digest, whole = drawn
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            victim = sorted(client.run(os.getpid).values())[0]
            killed = []

            def kill():
                while not any(name.startswith("poster.part-") for name in os.listdir()):
                    time.sleep(0.005)
                os.kill(victim, signal.SIGKILL)
                killed.append(len([name for name in os.listdir() if name.startswith("poster.part-")]))

            killer = threading.Thread(target=kill, daemon=True)
            killer.start()
            assert poster(file, parts=40, client=client) == digest
            killer.join(10)
            assert killed and killed[0] < 40
    with open("poster.png", "rb") as image:
        assert image.read() == whole
