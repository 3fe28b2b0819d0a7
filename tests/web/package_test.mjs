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
const fileOf = (path) => readFileSync(resolve(sources, path));
test("a recording is drawn the same from text, bytes, an object and gzip", async () => {
  const text = fileOf("recordings/crystals.json").toString();
  const images = await Promise.all([text, Buffer.from(text), JSON.parse(text), gzipSync(text)].map((form) => vorna.replay(form)));
  const digests = new Set(await Promise.all(images.map(vorna.hash)));
  assert.equal(digests.size, 1);
  assert.equal(images[0].data.length, 4 * images[0].width * images[0].height);
});

test("a recording is stepped through", async () => {
  const recording = await vorna.openRecording(fileOf("recordings/crystals.json"));
  assert.ok(recording.calls > 2);
  const first = recording.replay({last: 0}), all = recording.replay();
  assert.notDeepEqual(first.data, all.data);
  assert.deepEqual(recording.replay({last: recording.calls - 1}).data, all.data);
  recording.close();
  assert.throws(() => recording.replay(), /closed/);
});

test("wrong input is refused by one line that says what was expected", async () => {
  const refused = (promise, message) => assert.rejects(promise, (error) => error instanceof vorna.InputError && message.test(error.message) && !error.message.includes("\n"));
  await refused(vorna.replay("{}"), /^recording: the key 'picture' is missing$/);
  await refused(vorna.replay("{"), /^recording: /);
  const text = fileOf("recordings/crystals.json");
  await refused(vorna.replay(text, {lust: 3}), /^options: found 'lust', expected some of first, kernels, last$/);
  await refused(vorna.replay(text, {last: 1.5}), /^last: expected a whole number that fits, found 1.5$/);
  await refused(vorna.replay(text, {kernels: "avx2"}), /kernel set 'avx2'/);
});

test("hash is the SHA-256 of the bytes", async () => {
  assert.equal(await vorna.hash(new TextEncoder().encode("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
});

test("the module for recordings does not grow", () => {
  const transferred = ["vorna_replayer.wasm", "vorna_replayer.mjs", "index.js", "recordings.js", "module.js"]
    .reduce((sum, name) => sum + gzipSync(readFileSync(resolve(folder, name)), {level: 9}).length, 0);
  assert.ok(transferred <= 700 * 1024, `${transferred} bytes`);
});
