# Models: arrays, cameras, planes, and the command's bytes.
import threading
from types import SimpleNamespace

import numpy as np
import pytest

import vorna

SIZE = (90, 60)


def same(a, b):
    return np.array_equal(np.asarray(a), np.asarray(b))


def test_files_give_the_bytes_of_the_command(box_file, tmp_path, command):
    mine, theirs = tmp_path / "mine.png", tmp_path / "theirs.png"
    for arguments, options in (
        (dict(), ["--background", "white"]),
        (dict(background=None, supersample=3), ["--background", "none", "--supersample", "3"]),
        (dict(background=((20, 40, 60), "#64c800"), edges="feature"), ["--background", "#14283c,#64c800", "--edges=feature"]),
        (dict(colors=8, shading="flat"), ["--background", "white", "--colors", "8", "--shading", "flat"]),
        (dict(camera=vorna.Camera("left", up="z", fov=40, zoom=1.5)),
         ["--background", "white", "--view", "left", "--up", "z", "--fov", "40", "--zoom", "1.5"]),
        (dict(camera=vorna.Camera.look_at((3, 4, 5), (1, 0.5, 0), orthographic=True), look="studio"),
         ["--background", "white", "--camera", "3,4,5,1,0.5,0", "--ortho", "--look", "studio"]),
    ):
        image = vorna.render(box_file, size=SIZE, **arguments)
        image.save(mine)
        digest = command("render", box_file, "-o", theirs, "--size", "90x60", "--hash", *options)
        assert digest.strip() == image.digest()
        assert mine.read_bytes() == theirs.read_bytes()


def test_depths_and_numbers_are_the_passes_of_the_command(box_file, tmp_path, command):
    image = vorna.render(box_file, size=SIZE, pixels=False, depth=True, ids=True)
    for name in ("depth", "faces"):
        command("render", box_file, "-o", tmp_path / f"{name}.png", "--size", "90x60", "--pass", name)
    assert same(image.depth, vorna.read(tmp_path / "depth.png"))
    colors = np.asarray(vorna.read(tmp_path / "faces.png").pixels, np.int32)
    if colors.ndim == 2:
        colors = np.asarray(vorna.read(tmp_path / "faces.png").palette, np.int32)[colors]
    assert same(image.ids, (colors[..., 0] << 16 | colors[..., 1] << 8 | colors[..., 2]) - 1)
    assert image.pixels is None and set(np.unique(image.ids)) == {-1, 0, 1, 2, 3}


def test_arrays_draw_as_files(box, box_file):
    vertices, faces = box
    expected = vorna.render(box_file, size=SIZE)
    quads = np.array([[0, 1, 2, 3], [0, 4, 5, 1]])
    for mesh in (
        (vertices, faces),
        (vertices.astype(np.float32), faces.astype(np.uint32)),
        (np.asfortranarray(vertices), faces.tolist()),
        (vertices[::-1][::-1], faces.astype(">i4")),
        {"vertices": np.repeat(vertices, 2, 0)[::2], "faces": quads},
        SimpleNamespace(vertices=vertices, faces=faces),
        vorna.Model((vertices, faces)),
    ):
        assert same(vorna.render(mesh, size=SIZE), expected)


def test_numbers_are_those_of_the_given_faces(box):
    vertices, faces = box
    plain = vorna.render(box, size=SIZE, ids=True).ids
    # A face without an extent is not drawn, and counts.
    with_empty = np.insert(faces, 1, [2, 2, 3], axis=0)
    assert same(vorna.render((vertices, with_empty), size=SIZE, ids=True).ids, plain + (plain >= 1))
    quads = (vertices, np.array([[0, 1, 2, 3], [0, 4, 5, 1]]))
    assert same(vorna.render(quads, size=SIZE, ids=True).ids, np.where(plain < 0, -1, plain // 2))
    # Several meshes count on.
    both = vorna.Model([(vertices, faces[:2]), (vertices, faces[2:])])
    assert same(both.render(size=SIZE, ids=True).ids, plain)
    assert both.first_faces.tolist() == [0, 2]


def test_colors_and_textures_of_arrays(box):
    vertices, faces = box
    red = np.tile(np.array([[255, 0, 0]], np.uint8), (6, 1))
    by_name = vorna.render(box, size=SIZE, color="red", tint="own")
    for colors in (red, red / 255.0, red[:4]):  # the last are by face
        assert same(vorna.render((vertices, faces, None, colors), size=SIZE, tint="own"), by_name)
    uv = vertices[:, :2] / 2
    texture = np.zeros((2, 2, 3), np.uint8)
    texture[..., 0] = 255
    image = vorna.render((vertices, faces, None, None, uv, texture), size=SIZE)
    middle = image[30, 45]
    assert middle[0] > 60 and middle[1] < 10 and not image.warnings
    with pytest.raises(ValueError, match=r"texture: .*sides of up to 16384, found \(1, 20000, 3\) uint8"):
        vorna.render((vertices, faces, None, None, uv, np.zeros((1, 20000, 3), np.uint8)))
    with pytest.raises(ValueError, match="texture: expected uv"):
        vorna.render({"vertices": vertices, "faces": faces, "texture": texture})


def test_colors_by_face_are_kept_apart_from_colors_by_vertex():
    # Four vertices and four faces: only the object tells which of them have the colours.
    vertices = np.array([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]], float)
    faces = np.array([[0, 2, 1], [0, 1, 3], [0, 3, 2], [1, 2, 3]])
    colors = np.array([[255, 0, 0], [0, 255, 0], [0, 0, 255], [250, 200, 0]], np.uint8)
    visual = SimpleNamespace(kind="face", face_colors=colors)
    image = vorna.render(SimpleNamespace(vertices=vertices, faces=faces, visual=visual), size=SIZE, tint="own", ids=True, supersample=1)
    seen = np.unique(image.ids[image.ids >= 0])
    assert len(seen) >= 1
    for face in seen:
        levels = image.pixels[image.ids == face][:, :3].astype(int)
        assert np.abs(levels - colors[face]).max() <= 2  # as interpolation rounds
    by_vertex = SimpleNamespace(kind="vertex", vertex_colors=colors)
    assert same(vorna.render(SimpleNamespace(vertices=vertices, faces=faces, visual=by_vertex), size=SIZE),
                vorna.render((vertices, faces, None, colors), size=SIZE))


def test_colors_by_face_leave_lines_and_points_alone(box):
    vertices, faces = box
    far = np.array([[3, 0, 0], [3, 1, 0]], float)
    mesh = {"vertices": np.vstack([vertices, far]), "faces": faces, "lines": [[6, 7]], "points": [7]}
    colored = {**mesh, "colors": np.tile(np.array([[255, 0, 0]], np.uint8), (4, 1))}
    options = dict(size=SIZE, tint="own", supersample=1, point_size=3)
    plain, image = (vorna.render(part, **options) for part in (mesh, colored))
    is_red = (np.asarray(image)[..., :3] == (255, 0, 0)).all(2)
    assert is_red.any() and same(plain[~is_red], image[~is_red])
    assert (np.asarray(image)[~is_red] != 255).any()  # the line and the point
    with pytest.raises(ValueError, match="faces: expected whole numbers, found float64"):
        vorna.render((vertices, faces + 0.5, None, colored["colors"]))


def test_the_format_of_files_tells_what_points_up(tmp_path, command):
    corners = [(0, 0, 0), (3, 0, 0), (0, 2, 0), (0, 0, 1)]
    vertices = "".join("v %g %g %g\n" % corner for corner in corners)
    (tmp_path / "y.obj").write_text(vertices + "f 1 3 2\nf 1 2 4\nf 1 4 3\nf 2 3 4\n")
    facets = "".join("facet normal 0 0 0\nouter loop\n" + "".join("vertex %g %g %g\n" % corners[i] for i in face)
                     + "endloop\nendfacet\n" for face in ((0, 2, 1), (0, 1, 3), (0, 3, 2), (1, 2, 3)))
    for name in ("z.stl", "z.dat"):  # the latter is recognised by its content
        (tmp_path / name).write_text("solid s\n" + facets + "endsolid s\n")
    for names in (["y.obj"], ["z.stl"], ["z.dat"], ["y.obj", "z.dat"], ["z.dat", "y.obj"]):
        files = [tmp_path / name for name in names]
        line = command("render", *files, "-o", tmp_path / "x.png", "--size", "90x60", "--background", "white", "--hash")
        assert line.strip() == vorna.render(files, size=SIZE).digest(), names


def test_memory_is_limited(box_file, box):
    with pytest.raises(ValueError, match="box.obj: .*memory"):
        vorna.render(box_file, size=SIZE, max_memory=100)
    with pytest.raises(ValueError, match="max_memory: expected .* or more for this image"):
        vorna.render(box, size=(4000, 3000), supersample=1, max_memory=40 << 20)


def test_lights_of_arrays_count_to_the_last_digit(box):
    model = vorna.Model(box)
    lights = [np.array([0.3, 0.4, 1.0]), np.array([0.3, 0.4, 1.0 + 1e-12])]
    keys = []
    for light in lights:
        model.render(size=SIZE, light=light)
        keys.append(model._painted[0])
    assert keys[0] != keys[1]
    with pytest.raises(ValueError, match="light: expected"):
        model.render(size=SIZE, light="up")


def test_cameras_of_pose_and_matrix_project_as_they_say():
    # Four squares at known places; K puts them where pinhole cameras do, but for the rounding of corners to whole pixels.
    K = np.array([[1000.0, 0, 520.0], [0, 1100.0, 370.0], [0, 0, 1]])
    centers = np.array([[-0.4, -0.2, 0], [0.5, -0.2, 0], [0.5, 0.3, 0], [-0.4, 0.3, 0.4]])
    corners = np.array([[-1, -1, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0]]) * 0.05
    vertices = (centers[:, None] + corners).reshape(-1, 3)
    faces = np.arange(16).reshape(4, 4)
    angle = 0.3
    turned = np.array([[np.cos(angle), -np.sin(angle), 0], [np.sin(angle), np.cos(angle), 0], [0, 0, 1.0]])
    pose = np.eye(4)
    pose[:3, :3] = turned @ np.diag([1.0, -1, -1])  # looks along -z of the world
    pose[:3, 3] = (0.05, 0.02, 2.0)
    image = vorna.render((vertices, faces), size=(1000, 800), depth=True, ids=True, supersample=1,
                         camera=vorna.Camera.from_pose(pose, K, convention="opencv"))
    seen = (centers - pose[:3, 3]) @ pose[:3, :3]
    expected = seen[:, :2] / seen[:, 2:] * (1000, 1100) + (520, 370)
    distances = image.distances()
    for face in range(4):
        rows, columns = np.nonzero(image.ids == face)
        assert np.allclose((columns.mean() + 0.5, rows.mean() + 0.5), expected[face], atol=0.6), face
        assert np.allclose(distances[rows, columns], seen[face, 2], atol=1e-3)
    assert np.isinf(distances[image.ids < 0]).all()
    opengl = pose @ np.diag([1.0, -1, -1, 1])
    assert same(image, vorna.render((vertices, faces), size=(1000, 800), supersample=1,
                                    camera=vorna.Camera.from_pose(opengl, K)))
    flat = vorna.render((vertices, faces), size=(100, 80), depth=True, camera=vorna.Camera("front", orthographic=True))
    near, far = flat.distances()[flat.depth < 65535].min(), flat.distances()[flat.depth < 65535].max()
    assert np.isclose(far - near, 0.4, atol=1e-3)


def test_cameras_that_look_at_a_place_project_as_they_say():
    centers = np.array([[0, 0, 0], [1, 0.5, 0], [-0.8, 0.3, 1]])
    corners = np.array([[-1, -1, 0], [1, -1, 0], [1, 1, 0], [-1, 1, 0]]) * 0.04
    mesh = ((centers[:, None] + corners).reshape(-1, 3), np.arange(12).reshape(3, 4))
    image = vorna.render(mesh, size=(800, 600), ids=True, pixels=False, camera=vorna.Camera.look_at((0, 0, 5), (0, 0, 0), fov=40))
    scale = 300 / np.tan(np.radians(20))
    for face, (x, y, z) in enumerate(centers):
        rows, columns = np.nonzero(image.ids == face)
        expected = (400 + scale * x / (5 - z), 300 - scale * y / (5 - z))
        assert np.allclose((columns.mean() + 0.5, rows.mean() + 0.5), expected, atol=0.6), face


def test_a_model_gives_the_same_images_in_any_order_and_thread(box):
    model = vorna.Model(box)
    views = ["front", "top", "iso", "left"]
    expected = {view: vorna.render(box, size=SIZE, camera=view, threads=1).digest() for view in views}
    found, failures = [], []

    def draw():
        try:
            for view in views * 3:
                found.append(model.render(size=SIZE, camera=view, threads=2).digest() == expected[view])
        except Exception as error:  # a thread's exception would be lost
            failures.append(error)

    threads = [threading.Thread(target=draw) for _ in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not failures and len(found) == 36 and all(found)


def test_errors_are_the_lines_of_the_command(tmp_path, command, box):
    vertices, faces = box
    missing, bad = tmp_path / "missing.obj", tmp_path / "bad.obj"
    bad.write_text("v 0 0 0\nf 1 2 3\n")
    for path, kind in ((missing, FileNotFoundError), (bad, ValueError)):
        line = command("render", path, "-o", tmp_path / "x.png").removeprefix("vorna: ").rstrip("\n")
        with pytest.raises(kind) as error:
            vorna.render(path)
        assert str(error.value) == line and str(path) in line
    for arguments, message in (
        (dict(size=(0, 5)), "size: expected sides from 1 to 262144, found 0x5"),
        (dict(size="big"), "size: expected a width and a height"),
        (dict(shading="shiny"), "shading: expected one of auto, flat.* found 'shiny'"),
        (dict(color="rde"), "color: expected #rgb, #rrggbb or the name of a colour, found 'rde'"),
        (dict(color=(1, 2, 300)), "color: expected the name of a colour"),
        (dict(threads=-1), "threads: expected a whole number"),
        (dict(supersample=9), "supersample: expected 1 to 8"),
        (dict(camera=vorna.Camera.look_at((1, 1, 1), (1, 1, 1))), "camera: expected two places apart"),
        (dict(colors=16), "colors: expected 8 or 32"),
    ):
        with pytest.raises(ValueError, match=message):
            vorna.render(box, **arguments)
    for mesh, message in (
        ((vertices, [[0, 1, 6]]), "faces: expected numbers of vertices from 0 to 5, found 6"),
        ((vertices, [[0, 1, -1]]), "faces: expected numbers that fit 32 bits, found -1"),
        ((vertices[:, :2], faces), r"vertices: expected \(n, 3\) numbers, found \(6, 2\) float64"),
        ((vertices * np.nan, faces), "mesh: expected lists that belong together and finite places"),
        ((vertices, faces, vertices[:3]), r"normals: expected \(6, 3\) numbers"),
        (("abc", faces), "vertices: expected an array"),
        ((vertices,), "mesh: expected .*found 1 parts"),
        ([], "meshes: expected one or more"),
        ({"vertices": vertices, "face": faces}, "found face"),
        ((vertices, np.zeros((0, 3), int)), "mesh: empty scene"),
    ):
        with pytest.raises(ValueError, match=message):
            vorna.render(mesh)
    with pytest.raises(FileNotFoundError, match="cannot be written"):
        vorna.render(box, size=SIZE).save(tmp_path / "no" / "folder.png")
    for pose, message in ((np.eye(3), r"pose: expected \(4, 4\)"), (np.eye(4) * 2, "pose: expected a rotation")):
        with pytest.raises(ValueError, match=message):
            vorna.Camera.from_pose(pose)


def test_many_renders_do_not_grow():
    import resource

    model = vorna.Model((np.eye(3), [[0, 1, 2]]))
    def draw(count):
        for _ in range(count):
            model.render(size=(32, 32), depth=True, ids=True, threads=1, supersample=1)
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss

    draw(300)
    before = draw(1)
    assert draw(1500) - before < 1024  # KiB; a leaked image has 4 KiB or more
