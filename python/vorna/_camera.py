"""Cameras."""

import numpy as np


class Camera:
    """Where a model is seen from.

    view: iso, front, back, left, right, top or bottom; the camera shows the whole model. up: the model's axis that points up: y, z,
    x, -y, -z or -x; None = z for STL, OFF and Blender's files, else y, of several files as of the first. fov: the vertical field of
    view in degrees, 1 to 150; None = about 30. zoom: above 1 enlarges the middle of the image. orthographic: without perspective.

    Camera.look_at and Camera.from_pose give the place instead of a view.
    """

    def __init__(self, view="iso", *, up=None, fov=None, zoom=1.0, orthographic=False):
        self._options = {"view": view, "up_axis": up, "fov": fov, "zoom": zoom, "orthographic": orthographic}

    @classmethod
    def look_at(cls, eye, target, up=None, *, fov=None, zoom=1.0, orthographic=False):
        """A camera at `eye` with `target` in the middle of the image, in the model's coordinates.

        up: a direction that points up in the image; None = the model's.
        """
        camera = cls(fov=fov, zoom=zoom, orthographic=orthographic)
        camera._options.update(view=None, eye=_vector("eye", eye), target=_vector("target", target),
                               up=None if up is None else _vector("up", up))
        return camera

    @classmethod
    def from_pose(cls, pose, K=None, *, fov=None, convention="opengl", orthographic=False):
        """A camera with a measured place.

        pose: (4, 4) or (3, 4), from the camera's to the model's coordinates, with a rotation. convention: opengl, where the camera
        looks along its -z and y points up; or opencv, where it looks along z and y points down. K: (3, 3), the intrinsic matrix
        without skew, in pixels of the image; its principal point is counted from the upper left corner of the image, where the
        first pixel's centre is (0.5, 0.5).
        """
        pose = np.asarray(pose, np.float64)
        if pose.shape not in ((4, 4), (3, 4)):
            raise ValueError(f"pose: expected (4, 4) or (3, 4) numbers, found {pose.shape}")
        axes, eye = pose[:3, :3], pose[:3, 3]
        if not np.allclose(axes.T @ axes, np.eye(3), atol=1e-4) or np.linalg.det(axes) < 0:
            raise ValueError("pose: expected a rotation in the first three columns")
        if convention == "opencv":
            axes = axes * (1.0, -1.0, -1.0)
        elif convention != "opengl":
            raise ValueError(f"convention: expected opengl or opencv, found {convention!r}")
        camera = cls.look_at(eye, eye - axes[:, 2], axes[:, 1], fov=fov, orthographic=orthographic)
        if K is not None:
            K = np.asarray(K, np.float64)
            if K.shape != (3, 3) or abs(K[0, 1]) > 1e-9 * abs(K[0, 0]) or not np.allclose(K[2], (0, 0, 1)):
                raise ValueError("K: expected (3, 3) numbers without skew, and 0, 0, 1 in the last row")
            if fov is not None:
                raise ValueError("fov: expected none beside K")
            camera._options["lens"] = (K[0, 0], K[1, 1], K[0, 2], K[1, 2])
        return camera

    def __repr__(self):
        given = ", ".join(f"{name}={value!r}" for name, value in self._options.items() if value is not None)
        return f"<vorna.Camera {given}>"


def _vector(name, values):
    vector = np.asarray(values, np.float64)
    if vector.shape != (3,) or not np.isfinite(vector).all():
        raise ValueError(f"{name}: expected three finite numbers, found {values!r}")
    return vector


def options_of(camera, up_axis):
    """The options of a Camera, of the name of a view, or of None."""
    if camera is None or isinstance(camera, str):
        camera = Camera(camera or "iso")
    if not isinstance(camera, Camera):
        raise TypeError(f"camera: expected a Camera or the name of a view, found {type(camera).__name__}")
    options = camera._options
    return options if options.get("up_axis") is not None else {**options, "up_axis": up_axis}
