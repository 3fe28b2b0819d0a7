// A camera that goes around a model.
const axes = {x: [1, 0, 0], y: [0, 1, 0], z: [0, 0, 1]};

/** The direction of an axis such as "z" or "-y". */
const directionOf = (name) => axes[name.at(-1)].map((value) => (name.length > 1 ? -value : value));

const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];

export class Orbit {
  /** Radians around the axis that points up, and above the horizon. */
  azimuth = -0.6;
  elevation = 0.35;
  zoom = 1;

  turn(right, up) {
    this.azimuth -= right;
    this.elevation = Math.max(-1.55, Math.min(1.55, this.elevation + up));
  }

  scale(by) {
    this.zoom = Math.max(0.1, Math.min(50, this.zoom * by));
  }

  /** Options of an image whose width is `aspect` times its height. */
  options({center, radius, up}, aspect) {
    const upward = directionOf(up);
    // Which of the other axes the camera looks along at azimuth 0 is by the axis that points up.
    const side = cross(upward, directionOf({x: "y", y: "z", z: "x"}[up.at(-1)]));
    const front = cross(side, upward);
    const distance = radius * 4 / Math.min(1, aspect);
    const [sin, cos] = [Math.sin(this.azimuth), Math.cos(this.azimuth)], level = Math.cos(this.elevation);
    const eye = center.map((middle, i) => middle + distance * (
      level * (cos * front[i] + sin * side[i]) + Math.sin(this.elevation) * upward[i]));
    return {camera: [...eye, ...center, ...upward], zoom: this.zoom};
  }
}
