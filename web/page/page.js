// The page: files become images, which are turned, stepped through and saved. Nothing leaves the machine.
import {open} from "./vorna/index.js";
import {hash, openRecording} from "./vorna/replay.js"; // the smaller module
import {Orbit} from "./camera.js";

const at = (id) => document.getElementById(id);
const canvas = at("canvas"), form = at("controls"), context = canvas.getContext("2d");
const fields = form.elements;

let shown = null; // {kind, name, object, orbit}
let waiting = false;

function say(text, isError = false) {
  at("message").textContent = text;
  at("message").classList.toggle("error", isError);
}

const optionsOf = {
  model: ({object, orbit}, isMoving) => ({
    shading: fields.shading.value,
    look: isMoving ? "plain" : fields.look.value,
    ...(fields.edges.value && {edges: fields.edges.value, antialias: true}),
    ...(!fields.own.checked && {color: fields.color.value}),
    ...(isMoving && {supersample: 1}),
    ...orbit.options(object, canvas.width / canvas.height),
  }),
  map: () => ({
    antialias: fields.antialias.checked,
    graticule: Number(fields.graticule.value),
    ...(fields.projection.value && {projection: fields.projection.value}),
  }),
};

function draw(isMoving) {
  const {kind, object} = shown;
  if (kind === "recording") {
    const call = fields.call.valueAsNumber;
    fields.number.value = `${call + 1} of ${object.calls}`;
    const image = object.replay({last: call});
    [canvas.width, canvas.height] = [image.width, image.height];
    return image;
  }
  return object.draw({...optionsOf[kind](shown, isMoving), size: [canvas.width, canvas.height]});
}

/** Draws before the next frame of the browser. isMoving: a coarser image, followed by a fine one. */
function update(isMoving = false) {
  if (waiting || !shown) {
    return;
  }
  waiting = true;
  requestAnimationFrame(async () => {
    waiting = false;
    try {
      const start = performance.now();
      const image = draw(isMoving);
      const time = performance.now() - start;
      context.putImageData(image, 0, 0);
      const digest = isMoving ? "" : ` · SHA-256 ${await hash(image)}`;
      at("facts").textContent = `${shown.name} · ${shown.facts ?? ""} · ${image.width} × ${image.height} · ${time.toFixed(1)} ms${digest}`;
      document.body.dataset.state = isMoving ? "moving" : "drawn";
    } catch (error) {
      say(error.message, true);
      document.body.dataset.state = "failed";
    }
  });
}

const isRecording = (text) => /^\s*\{/.test(text) && /"(calls|picture)"\s*:/.test(text) && !/"type"\s*:\s*"(FeatureCollection|Topology)"/.test(text.slice(0, 4096));

async function openFiles(files) {
  if (files.length === 0) {
    return;
  }
  document.body.dataset.state = "reading";
  say(`${files[0].name} is read`);
  try {
    const order = [...files].sort((a, b) => /\.(mtl|png|jpe?g|tga|bmp|webp)$/i.test(a.name) - /\.(mtl|png|jpe?g|tga|bmp|webp)$/i.test(b.name));
    const [first] = order;
    const bytes = await first.arrayBuffer();
    let kind = "recording", object;
    if (isRecording(new TextDecoder().decode(bytes.slice(0, 1 << 20)))) {
      object = await openRecording(bytes);
      fields.call.max = fields.call.value = object.calls - 1;
    } else {
      object = await open(Object.fromEntries(order.map((file) => [file.name, file])));
      kind = object.kind;
      [canvas.width, canvas.height] = [960, 640];
    }
    shown?.object.close();
    const facts = {recording: `${object.calls} calls`, model: `${object.triangles} triangles`, map: "map"}[kind];
    shown = {kind, object, name: first.name, facts, orbit: new Orbit()};
    form.className = kind;
    at("download").disabled = false;
    say(object.warnings?.join(" · ") || "Files stay on this machine.");
    update();
  } catch (error) {
    say(error.message, true);
    document.body.dataset.state = "failed";
  }
}

at("files").addEventListener("change", ({target}) => openFiles(target.files));
for (const type of ["dragover", "dragleave", "drop"]) {
  addEventListener(type, (event) => {
    event.preventDefault();
    document.body.classList.toggle("over", type === "dragover");
    if (type === "drop") {
      openFiles(event.dataTransfer.files);
    }
  });
}

form.addEventListener("input", () => update());
canvas.addEventListener("pointermove", (event) => {
  if (shown?.kind === "model" && event.buttons & 1) {
    shown.orbit.turn(event.movementX * 0.01, event.movementY * 0.01);
    update(true);
  }
});
canvas.addEventListener("pointerdown", (event) => canvas.setPointerCapture(event.pointerId));
canvas.addEventListener("pointerup", () => update());
canvas.addEventListener("wheel", (event) => {
  if (shown?.kind === "model") {
    event.preventDefault();
    shown.orbit.scale(Math.exp(-event.deltaY * 0.001));
    update();
  }
}, {passive: false});
addEventListener("keydown", (event) => {
  const step = Math.PI / 12;
  const turns = {ArrowLeft: [-step, 0], ArrowRight: [step, 0], ArrowUp: [0, step], ArrowDown: [0, -step]};
  if (shown?.kind === "model" && event.target === canvas && turns[event.key]) {
    event.preventDefault();
    shown.orbit.turn(...turns[event.key]);
    update();
  }
});
at("download").addEventListener("click", () => canvas.toBlob((blob) => {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = `${shown.name.replace(/\.[^.]*$/, "")}.png`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href));
}, "image/png"));

// ?open=FILE shows a file beside the page.
const asked = new URLSearchParams(location.search).getAll("open");
if (asked.length > 0) {
  openFiles(await Promise.all(asked.map(async (path) => {
    const response = await fetch(path);
    if (!response.ok) {
      say(`${path}: ${response.status} ${response.statusText}`, true);
    }
    return new File([await response.blob()], path.split("/").at(-1));
  })));
}
document.body.dataset.ready = "yes";
