# Executes a notebook and compares its outputs with those that it holds. usage: notebook.py NOTEBOOK FOLDER; with --update as a third
# argument the notebook gets the outputs instead.
import json
import pathlib
import subprocess
import sys


def outputs_of(notebook):
    """What each cell shows, without counts of executions."""
    shown = []
    for cell in notebook["cells"]:
        for output in cell.get("outputs", []):
            if output["output_type"] == "error":
                raise SystemExit("\n".join(output["traceback"]))
            data = output.get("data", {"text": output.get("text", "")})
            shown.append({kind: "".join(text).strip() for kind, text in data.items()})
    return shown


def main(path, folder, update):
    folder.mkdir(parents=True, exist_ok=True)
    subprocess.run([sys.executable, "-m", "nbconvert", "--to", "notebook", "--execute", "--output-dir", folder, "--log-level=ERROR",
                    path], check=True)
    made = json.loads((folder / path.name).read_text())
    if update:
        for cell in made["cells"]:
            cell["metadata"] = {}
        made["metadata"]["language_info"] = {"name": "python"}
        path.write_text(json.dumps(made, indent=1) + "\n")
        return
    expected, found = outputs_of(json.loads(path.read_text())), outputs_of(made)
    images = sum("image/png" in output for output in found)
    assert images >= 2, f"expected images, found {images}"
    assert expected == found, "outputs differ from those in the notebook: run this with --update and look at them"


main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), "--update" in sys.argv)
