"""usage: maps_page.py VORNA SOURCES: the commands of docs/maps.md run, with small files under the names that they use."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

vorna, sources = (pathlib.Path(name).resolve() for name in sys.argv[1:])
page = (sources / "docs/maps.md").read_text()
blocks = re.findall(r"^```sh\n(.*?)^```", page, re.MULTILINE | re.DOTALL)
commands = [line for block in blocks for line in block.replace("\\\n", " ").splitlines()]
ours = [line for line in commands if line.startswith("vorna ")]
others = [line for line in commands if not line.startswith("vorna ")]
# Data of others are not fetched in tests.
assert len(ours) >= 8 and all(line.startswith("npm pack") for line in others), others


def square(west, south, name):
    """Three degrees on each side."""
    ring = [[west, south], [west + 3, south], [west + 3, south + 3], [west, south + 3], [west, south]]
    return {"type": "Feature", "properties": {"name": name}, "geometry": {"type": "Polygon", "coordinates": [ring]}}


def topology(features):
    arcs = [feature["geometry"]["coordinates"][0] for feature in features]
    shapes = [{"type": "Polygon", "arcs": [[i]], "properties": feature["properties"]} for i, feature in enumerate(features)]
    return {"type": "Topology", "arcs": arcs, "objects": {"countries": {"type": "GeometryCollection", "geometries": shapes}}}


# A field that one shape has is a field of the map.
countries = [square(5, 58, "Norway"), square(8, 58, "Sweden"), square(10, 46, "Austria"), square(-40, -20, "Atlantis")]
countries[0]["properties"]["pop"] = 5_500_000
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    os.mkdir("package")
    os.symlink(sources / "recordings", "recordings")
    os.symlink("recordings/maps/plate.dxf", "plan.dxf")
    for name in ("countries-110m.json", "countries-10m.json"):
        pathlib.Path("package", name).write_text(json.dumps(topology(countries)))
    pathlib.Path("countries.geojson").write_text(json.dumps({"type": "FeatureCollection", "features": countries}))
    towns = "".join(f"Town {i},{5 + i / 4},{58 + i % 7 / 3},{300 * i * i}\n" for i in range(12))
    pathlib.Path("towns.csv").write_text("name,lon,lat,pop\n" + towns)
    corners = "".join(f"vertex {corner}\n" for corner in ("0 0 0", "40 0 0", "0 0 30"))
    pathlib.Path("bracket.stl").write_text(f"solid\nfacet normal 0 -1 0\nouter loop\n{corners}endloop\nendfacet\nendsolid\n")
    styles = re.findall(r"^```json\n(.*?)^```", page, re.MULTILINE | re.DOTALL)
    assert len(styles) == 1, len(styles)
    pathlib.Path("style.json").write_text(styles[0])
    environment = {**os.environ, "PATH": f"{vorna.parent}:{os.environ['PATH']}"}
    for command in ours:
        done = subprocess.run(["sh", "-c", command], env=environment, capture_output=True, text=True, check=False)
        errors = [line for line in done.stderr.splitlines() if not line.startswith("vorna: warning: ")]
        assert done.returncode == 0 and not errors, f"{command}: status {done.returncode}: {done.stderr}"
        if image := re.search(r" -o (\S+)", command):
            assert pathlib.Path(image[1]).stat().st_size > 0, command
        else:
            assert done.stdout, command
print(f"{len(ours)} commands")
