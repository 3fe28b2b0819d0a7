# Images that several processes or machines draw in parts.
import json
import os

from ._vorna import Error


def poster(source, path, *, size, parts, options=(), client=None, workers=None, threads=1, command="vorna"):
    """Draws a file in parts of about equal work, joins them, and returns the SHA-256 of the pixels: those of one `vorna render`.

    source: a file or a list of files, models or a map. path: the image to write, a file. size: (width, height) in pixels, up to
    262144. parts: how many. options: further words for `vorna render`, such as ["--edges", "--view=front"].

    client: a dask.distributed.Client, whose workers share the current folder and have the command; the parts of a worker that
    dies are drawn by the others. None = so many processes of this machine as `workers` says, as many as there are processors if
    it is None. threads: of each process. command: the file or name of the command vorna.

    Parts lie beside the image until it is complete: when a call has been interrupted, the next one draws only what is missing.
    An exception, of a signal handler too, ends the processes of this machine, which remove their unfinished files.
    Raises ValueError for wrong input and vorna.Error for other failures, with the line of the command.
    """
    # Modules that only posters need are loaded here, so that the package starts faster.
    import concurrent.futures
    import subprocess

    if os.fspath(path) in ("-", b"-"):
        raise ValueError("path: expected a file, found - for standard output; ./- is a file")
    sources = [source] if isinstance(source, (str, os.PathLike)) else list(source)
    width, height = size
    processes = _Processes()
    plan = json.loads(processes.output([command, "render", f"--output={os.fsdecode(path)}", f"--size={width}x{height}",
                                        f"--plan={parts}", f"--threads={threads}", "--hash", *options, "--",
                                        *map(os.fspath, sources)]))
    # The parts that take longest come first, so that no worker is left with one at the end.
    missing = sorted((part for part in plan["parts"] if not part["done"]), key=lambda part: -part["seconds"])
    commands = [part["command"] for part in missing]
    if client is None:
        with concurrent.futures.ThreadPoolExecutor(workers or os.cpu_count()) as pool:
            _finish([pool.submit(processes.run, words) for words in commands], processes)
    else:
        # A function of the standard library, so that workers need not have this package.
        futures = [client.submit(subprocess.run, words, cwd=os.getcwd(), capture_output=True, pure=False, priority=-i)
                   for i, words in enumerate(commands)]
        _finish(futures, processes)
    digest = processes.output(plan["assemble"]["command"]).strip()
    for part in plan["parts"]:
        os.remove(part["file"])
    return digest


class _Processes:
    """Processes of any thread, which end() asks to end."""

    def __init__(self):
        import threading

        self._running = set()
        self._has_ended = False
        self._lock = threading.Lock()

    def run(self, words):
        """What a process has printed, and its status. An exception meanwhile ends the process, and is raised when it has ended."""
        import subprocess

        process = None
        try:
            with self._lock:
                if self._has_ended:
                    raise Error("the process was not begun, because another one was interrupted")
                process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                self._running.add(process)
            output, errors = process.communicate()
        except BaseException:
            if process is not None:
                process.terminate()  # unlike a kill it lets the command remove its unfinished file
                process.communicate()
            raise
        finally:
            with self._lock:
                self._running.discard(process)
        return subprocess.CompletedProcess(words, process.returncode, output, errors)

    def output(self, words):
        return os.fsdecode(_check(self.run(words)).stdout)

    def end(self):
        with self._lock:
            self._has_ended = True
            for process in self._running:
                process.terminate()


def _finish(futures, processes):
    """Waits for processes. The first one that fails cancels those that have not begun; an exception ends the others too."""
    done = None
    try:
        for future in futures:
            done = future.result()
            if done.returncode != 0:
                break
    except BaseException:
        processes.end()
        raise
    finally:
        for future in futures:
            future.cancel()
    if done is not None:
        _check(done)


def _check(done):
    if done.returncode != 0:
        line = os.fsdecode(done.stderr).strip() or f"the command ended with status {done.returncode}"
        raise (ValueError if done.returncode == 2 else Error)(line)
    return done
