// usage: node --test package_test.mjs, with the package's folder in VORNA_PACKAGE: what the package accepts, refuses and draws.
import assert from "node:assert/strict";
import {gzipSync} from "node:zlib";
import {readFileSync} from "node:fs";
import {resolve} from "node:path";
import {pathToFileURL} from "node:url";
import test from "node:test";

const folder = resolve(process.env.VORNA_PACKAGE);
const sources = resolve(import.meta.dirname, "../..");
const vorna = await import(pathToFileURL(resolve(folder, "index.js")).href);
const small = await import(pathToFileURL(resolve(folder, "replay.js")).href);
const fileOf = (path) => readFileSync(resolve(sources, path));
const square = {positions: [0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0], indices: [0, 1, 2, 0, 2, 3]};
const pixel = ({width, data}, x, y) => [...data.subarray(4 * (y * width + x), 4 * (y * width + x) + 4)];

test("a recording is drawn the same from text, bytes, an object and gzip, by both modules", async () => {
  const text = fileOf("recordings/crystals.json").toString();
  const images = await Promise.all([text, Buffer.from(text), JSON.parse(text), gzipSync(text)].map((form) => vorna.replay(form)));
  const digests = new Set(await Promise.all([...images, await small.replay(text)].map(small.hash)));
  assert.equal(digests.size, 1);
  assert.equal(images[0].data.length, 4 * images[0].width * images[0].height);
});

test("a recording is stepped through", async () => {
  const recording = await small.openRecording(fileOf("recordings/crystals.json"));
  assert.ok(recording.calls > 2);
  const first = recording.replay({last: 0}), all = recording.replay();
  assert.notDeepEqual(first.data, all.data);
  assert.deepEqual(recording.replay({last: recording.calls - 1}).data, all.data);
  recording.close();
  assert.throws(() => recording.replay(), /closed/);
});

test("arrays are drawn with their colours, and the camera moves", async () => {
  const colors = [0, 1, 2, 3].flatMap(() => [255, 0, 0, 255]);
  const image = await vorna.render({...square, colors}, {size: [64, 48], view: "front", tint: "own", background: "#0000ff"});
  assert.deepEqual([image.width, image.height], [64, 48]);
  assert.deepEqual(pixel(image, 32, 24), [255, 0, 0, 255]);
  assert.deepEqual(pixel(image, 0, 0), [0, 0, 255, 255]);
  const model = await vorna.open(square);
  assert.equal(model.triangles, 2);
  const left = model.draw({size: [64, 48], camera: [-3, 0, 3, 0.5, 0.5, 0]});
  assert.notDeepEqual(left.data, model.draw({size: [64, 48], camera: [3, 0, 3, 0.5, 0.5, 0]}).data);
  assert.deepEqual(left.data, model.draw({size: [64, 48], camera: [-3, 0, 3, 0.5, 0.5, 0]}).data);
  model.close();
});

test("a model with materials and a map are drawn from files", async () => {
  const files = {"still-life.obj": fileOf("recordings/models/still-life.obj"), "still-life.mtl": fileOf("recordings/models/still-life.mtl")};
  const model = await vorna.open(files);
  const {triangles} = model;
  assert.ok(triangles > 100);
  const scene = model.draw({size: [80, 60]});
  assert.ok(new Set(new Uint32Array(scene.data.buffer)).size > 100);
  const map = await vorna.open(fileOf("recordings/maps/flange.dxf"), {name: "flange.dxf"});
  assert.equal(map.kind, "map");
  assert.ok(new Set(new Uint32Array(map.draw({size: [160, 120]}).data.buffer)).size > 1);
});

test("wrong input is refused by one line that says what was expected", async () => {
  const refused = (promise, message) => assert.rejects(promise, (error) => error instanceof vorna.InputError && message.test(error.message) && !error.message.includes("\n"));
  await refused(vorna.replay("{}"), /^recording: .*expected/);
  await refused(vorna.replay("{"), /^recording: /);
  await refused(vorna.render(square, {size: [64]}), /^size: expected 2 numbers, found \[64\]$/);
  await refused(vorna.render(square, {sise: [64, 64]}), /^options: found 'sise', expected some of /);
  await refused(vorna.render(square, {view: "above"}), /^view: expected one of iso, front, .*, found "above"$/);
  await refused(vorna.render(square, {kernels: "avx2"}), /kernel set 'avx2'/);
  await refused(vorna.render({...square, indices: [0, 1, 9]}), /^indices: expected numbers of vertices from 0 to 3, found 9$/);
  await refused(vorna.render({positions: [0, 0, NaN]}), /^positions: expected finite numbers$/);
  await refused(vorna.render({positions: [0, 0]}), /^positions: expected a multiple of 3 numbers, found 2$/);
  await refused(vorna.render("ply\nnothing", {name: "bad.ply"}), /bad\.ply/);
  await refused(vorna.render(7), /^model: expected/);
});

test("both kernel sets draw the same, also in windows narrower than a vector", async () => {
  for (const size of [[3, 40], [640, 480]]) {
    const images = await Promise.all(["portable", "wasm"].map((kernels) => vorna.render(square, {size, kernels})));
    assert.deepEqual(images[0].data, images[1].data);
  }
});

test("hash is the SHA-256 of the bytes", async () => {
  assert.equal(await small.hash(new TextEncoder().encode("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
});

test("the module for recordings does not grow", () => {
  const transferred = ["vorna_replayer.wasm", "vorna_replayer.mjs", "replay.js", "recordings.js", "module.js"]
    .reduce((sum, name) => sum + gzipSync(readFileSync(resolve(folder, name)), {level: 9}).length, 0);
  assert.ok(transferred <= 700 * 1024, `${transferred} bytes`);
});
