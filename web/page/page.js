// The page: a recording becomes an image, which is stepped through and saved. Nothing leaves the machine.
import {hash, openRecording} from "./vorna/index.js";

const at = (id) => document.getElementById(id);
const canvas = at("canvas"), form = at("controls"), context = canvas.getContext("2d");
const fields = form.elements;

let shown = null; // {name, recording}
let waiting = false;

function say(text, isError = false) {
  at("message").textContent = text;
  at("message").classList.toggle("error", isError);
  document.body.dataset.state = isError ? "failed" : document.body.dataset.state;
}

/** Draws before the next frame of the browser. */
function update() {
  if (waiting || !shown) {
    return;
  }
  waiting = true;
  requestAnimationFrame(async () => {
    waiting = false;
    try {
      const call = fields.call.valueAsNumber, start = performance.now();
      const image = shown.recording.replay({last: call});
      const time = performance.now() - start;
      [canvas.width, canvas.height] = [image.width, image.height];
      context.putImageData(image, 0, 0);
      fields.number.value = `${call + 1} of ${shown.recording.calls}`;
      at("facts").textContent =
        `${shown.name} · ${image.width} × ${image.height} · ${time.toFixed(1)} ms · SHA-256 ${await hash(image)}`;
      document.body.dataset.state = "drawn";
    } catch (error) {
      say(error.message, true);
    }
  });
}

async function openFile(file) {
  if (!file) {
    return;
  }
  document.body.dataset.state = "reading";
  say(`${file.name} is read`);
  try {
    const recording = await openRecording(file);
    shown?.recording.close();
    shown = {recording, name: file.name};
    fields.call.max = fields.call.value = recording.calls - 1;
    form.className = "recording";
    at("download").disabled = false;
    say("Files stay on this machine.");
    update();
  } catch (error) {
    say(error.message.replace(/^recording/, file.name), true);
  }
}

at("files").addEventListener("change", ({target}) => openFile(target.files[0]));
for (const type of ["dragover", "dragleave", "drop"]) {
  addEventListener(type, (event) => {
    event.preventDefault();
    document.body.classList.toggle("over", type === "dragover");
    if (type === "drop") {
      openFile(event.dataTransfer.files[0]);
    }
  });
}
form.addEventListener("input", update);
at("download").addEventListener("click", () => canvas.toBlob((blob) => {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(blob);
  link.download = `${shown.name.replace(/\.[^.]*$/, "")}.png`;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href));
}, "image/png"));

// ?open=FILE shows a file of the same server.
const asked = new URLSearchParams(location.search).get("open");
if (asked) {
  const response = await fetch(asked);
  if (response.ok) {
    await openFile(new File([await response.blob()], asked.split("/").at(-1)));
  } else {
    say(`${asked}: ${response.status} ${response.statusText}`, true);
  }
}
document.body.dataset.ready = "yes";
