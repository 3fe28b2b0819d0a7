// A knot of so many triangles as arrays, the same numbers for every side of scripts/bench-web.py, which has it in Python too.
export function knot(segments, sides) {
  const positions = new Float32Array(3 * segments * sides), indices = new Uint32Array(6 * segments * sides);
  const middle = (angle) => [(2 + Math.cos(3 * angle)) * Math.cos(2 * angle), (2 + Math.cos(3 * angle)) * Math.sin(2 * angle),
                             Math.sin(3 * angle)];
  for (let i = 0, at = 0; i < segments; ++i) {
    const angle = 2 * Math.PI * i / segments, here = middle(angle), next = middle(angle + 0.01);
    const along = next.map((value, k) => value - here[k]);
    const across = [-along[1], along[0], 0], length = Math.hypot(...across);
    const first = across.map((value) => value / length);
    const second = [along[1] * first[2] - along[2] * first[1], along[2] * first[0] - along[0] * first[2],
                    along[0] * first[1] - along[1] * first[0]];
    const size = Math.hypot(...second);
    for (let j = 0; j < sides; ++j) {
      const turn = 2 * Math.PI * j / sides, [u, v] = [0.4 * Math.cos(turn), 0.4 * Math.sin(turn) / size];
      here.forEach((value, k) => { positions[3 * (i * sides + j) + k] = value + u * first[k] + v * second[k]; });
      const [a, b] = [i * sides + j, i * sides + (j + 1) % sides];
      const [c, d] = [(a + sides) % (segments * sides), (b + sides) % (segments * sides)];
      for (const corner of [a, b, c, b, d, c]) {
        indices[at++] = corner;
      }
    }
  }
  return {positions, indices};
}

/** Where the camera of a frame stands, going around the knot. */
export const eyeOf = (frame) => [11 * Math.sin(frame / 20), 4, 11 * Math.cos(frame / 20)];

/** The median time of frames in milliseconds, after some that are not counted. */
export function medianOf(draw, frames = 21, before = 4) {
  const times = [];
  for (let frame = 0; frame < frames + before; ++frame) {
    const start = performance.now();
    draw(frame);
    times.push(performance.now() - start);
  }
  return times.slice(before).sort((a, b) => a - b)[frames >> 1];
}
