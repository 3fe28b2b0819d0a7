# Images that several processes or machines draw in parts.
import json
import os

from ._vorna import Error


def poster(source, path, *, size, parts, options=(), client=None, workers=None, threads=1, command="vorna"):
    """Draws a file in parts of about equal work, joins them, and returns the SHA-256 of the pixels: those of one `vorna render`.

    source: a file or a list of files, models or a map. path: the image to write. size: (width, height) in pixels, up to 262144.
    parts: how many. options: further words for `vorna render`, such as ["--edges", "--view=front"].

    client: a dask.distributed.Client, whose workers share the current folder and have the command; the parts of a worker that
    dies are drawn by the others. None = so many processes of this machine as `workers` says, as many as there are processors if
    it is None. threads: of each process. command: the file or name of the command vorna.

    Parts lie beside the image until it is complete: when a call has been interrupted, the next one draws only what is missing.
    Raises ValueError for wrong input and vorna.Error for other failures, with the line of the command.
    """
    # Modules that only posters need are loaded here, so that the package starts faster.
    import concurrent.futures
    import subprocess

    sources = [source] if isinstance(source, (str, os.PathLike)) else list(source)
    width, height = size
    plan = json.loads(_output([command, "render", f"--output={os.fspath(path)}", f"--size={width}x{height}", f"--plan={parts}",
                               f"--threads={threads}", "--hash", *options, "--", *map(os.fspath, sources)]))
    # The parts that take longest come first, so that no worker is left with one at the end.
    missing = sorted((part for part in plan["parts"] if not part["done"]), key=lambda part: -part["seconds"])
    commands = [part["command"] for part in missing]
    if client is None:
        with concurrent.futures.ThreadPoolExecutor(workers or os.cpu_count()) as pool:
            _finish([pool.submit(_run, words) for words in commands])
    else:
        # A function of the standard library, so that workers need not have this package.
        futures = [client.submit(subprocess.run, words, cwd=os.getcwd(), capture_output=True, pure=False, priority=-i)
                   for i, words in enumerate(commands)]
        _finish(futures)
    digest = _output(plan["assemble"]["command"]).strip()
    for part in plan["parts"]:
        os.remove(part["file"])
    return digest


def _run(words):
    import subprocess

    return subprocess.run(words, capture_output=True)


def _finish(futures):
    """Waits for processes; the first failure cancels those that have not begun."""
    try:
        for future in futures:
            _check(future.result())
    except BaseException:
        for future in futures:
            future.cancel()
        raise


def _check(done):
    if done.returncode != 0:
        line = os.fsdecode(done.stderr).strip() or f"the command ended with status {done.returncode}"
        raise (ValueError if done.returncode == 2 else Error)(line)
    return done


def _output(words):
    return os.fsdecode(_check(_run(words)).stdout)
