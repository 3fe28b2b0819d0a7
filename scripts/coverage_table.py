"""usage: coverage_table.py COVERAGE.json [FOLDER...]

Prints a table of the lines and branches that tests reach, by folder, from the JSON of gcovr. Readers of files have a row of their
own. For each FOLDER it lists lines whose branches are not all taken.
"""

import json
import pathlib
import sys

# What reads files of strangers, wherever it lies.
READERS = {
    "drawing/files": ["gzip", "input_file", "text_encoding", "zstd"],
    "drawing/image": ["color_name", "dds", "image", "jpeg_libjpeg", "palette", "png_libpng", "tga_bmp_stb", "webp_libwebp"],
    "drawing/job": ["content_tests", "formats", "image_part", "part_reader"],
    "drawing/map": ["dxf_curves", "dxf_entities", "dxf_reader", "geojson_reader", "json_geometry", "map_reader", "topojson_reader"],
    "drawing/model": ["assimp_files", "assimp_paint", "assimp_reader", "model_reader", "obj_materials", "obj_reader", "ply_reader",
                      "separate_process", "stl_reader", "texture"],
    "drawing/recording": ["document", "overlay", "reader", "recording_file", "recording_reader", "rendition_maker", "values"],
}


def row_of(name):
    path = pathlib.PurePath(name)
    if path.stem in READERS.get(str(path.parent), []):
        return "drawing, readers"
    if path.parts[0] == "drawing":
        return "drawing, the rest"
    return path.parts[0]


def main():
    missing = [f"{folder}/{name}.cpp" for folder, names in READERS.items() for name in names
               if not pathlib.Path(folder, f"{name}.cpp").exists()]
    if missing:
        sys.exit(f"coverage_table.py: expected the sources of READERS, found no {', '.join(missing)}")
    files = json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]
    folders = tuple(folder.rstrip("/") + "/" for folder in sys.argv[2:])
    rows = {}
    for file in files:
        counts = rows.setdefault(row_of(file["file"]), [0, 0, 0, 0])
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            branches = [branch["count"] > 0 for branch in line["branches"]]
            for i, number in enumerate([1, line["count"] > 0, len(branches), sum(branches)]):
                counts[i] += number
            if folders and file["file"].startswith(folders) and (line["count"] == 0 or not all(branches)):
                print(f"{file['file']}:{line['line_number']}: {sum(branches)} of {len(branches)}, {line['count']} times")
    print("| folder | lines | reached | branches | taken |\n|---|---:|---:|---:|---:|")
    for name, (lines, reached, branches, taken) in sorted(rows.items()):
        print(f"| {name} | {lines} | {100 * reached / lines:.1f} % | {branches} | {100 * taken / max(branches, 1):.1f} % |")


main()
