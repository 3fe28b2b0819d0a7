// The page's script, first part: the data, the times, the image with outlines, and the histories of pixels.
"use strict";

const data = JSON.parse(document.getElementById("data").textContent);
const {calls, image, thumbnails, kinds, renditions} = data;
const count = calls.kind.length;
const element = (id) => document.getElementById(id);
const number = (value) => value.toLocaleString("en");

function made(tag, text, name) {
  const node = document.createElement(tag);
  node.textContent = text;
  node.className = name || "";
  return node;
}

function bytes_of(id) {
  const node = element(id);
  return Uint8Array.from(node ? atob(node.textContent) : "", (c) => c.charCodeAt(0));
}

// The document, saved under its own name.
if (data.document) {
  const link = element("download");
  link.textContent = "Download " + data.document;
  link.download = data.document;
  link.href = URL.createObjectURL(new Blob([bytes_of("file")], {type: "application/octet-stream"}));
  link.hidden = false;
}

// Times.

const times = calls.microseconds;
const longest = times ? times.reduce((a, b) => Math.max(a, b), 0) : 0;
const time_text = (time) => time >= 1000 ? (time / 1000).toFixed(2) + " ms" : time.toFixed(1) + " µs";

function hue_of(call) {
  return "hsl(" + (calls.kind[call] * 137.5 % 360) + " 60% 50%)";
}

// Calls take the columns in which they were drawn, as wide as their share of the time.
const starts = [0];
if (times) {
  for (let call = 0; call < count; ++call) {
    starts.push(starts[call] + times[call]);
  }
}

function draw_timeline() {
  const canvas = element("timeline");
  canvas.hidden = !times || starts[count] === 0;
  if (canvas.hidden) {
    return;
  }
  const context = canvas.getContext("2d"), scale = canvas.width / starts[count];
  context.clearRect(0, 0, canvas.width, canvas.height);
  for (let call = 0; call < count; ++call) {
    const left = starts[call] * scale, width = times[call] * scale;
    context.fillStyle = hue_of(call);
    context.fillRect(left, 0, Math.max(width - (width > 3 ? 1 : 0), 0.2), canvas.height);
  }
  if (chosen !== null) {
    context.fillStyle = "#000";
    context.fillRect(starts[chosen] * scale - 1, 0, Math.max(times[chosen] * scale, 1) + 2, 4);
  }
}

element("timeline").addEventListener("click", (event) => {
  const at = event.offsetX / element("timeline").clientWidth * starts[count];
  let low = 0, high = count - 1;
  while (low < high) {
    const middle = (low + high + 1) >> 1;
    [low, high] = starts[middle] <= at ? [middle, high] : [low, middle - 1];
  }
  choose(low, true);
});

// The image.

const planes = [...document.querySelectorAll("#stack img")];
const pixels = document.createElement("canvas").getContext("2d", {willReadFrequently: true});
let zoom = 1;

function set_zoom(wanted) {
  zoom = Math.min(Math.max(wanted, 1 / 64), 64);
  const stack = element("stack");
  stack.style.width = image.width * zoom + "px";
  stack.style.height = image.height * zoom + "px";
  stack.className = zoom > 1 ? "enlarged" : "";
  element("zoom").textContent = zoom >= 1 ? zoom + " : 1" : "1 : " + +(1 / zoom).toFixed(1);
  draw_outline();
}

const next_zoom = (up) => set_zoom(zoom >= 1 && (up || zoom > 1) ? Math.round(zoom) + (up ? 1 : -1) : up ? zoom * 2 : zoom / 2);
element("larger").onclick = () => next_zoom(true);
element("smaller").onclick = () => next_zoom(false);

function show_plane(shown) {
  planes.forEach((plane, i) => {
    plane.hidden = i !== shown;
    element("planes").children[i].setAttribute("aria-pressed", i === shown);
  });
}

planes.forEach((plane, i) => {
  const button = made("button", plane.alt);
  button.onclick = () => show_plane(i);
  element("planes").append(button, " ");
});

const bounds_of = (call) => calls.bounds.slice(4 * call, 4 * call + 4); // column, row, width, height

function draw_outline() {
  const canvas = element("outline"), ratio = window.devicePixelRatio || 1;
  const most = 8192; // of a canvas's sides
  const scale = Math.min(zoom * ratio, most / Math.max(image.width, image.height));
  canvas.width = Math.ceil(image.width * scale);
  canvas.height = Math.ceil(image.height * scale);
  const context = canvas.getContext("2d");
  const frame = (x, y, width, height, color) => {
    for (const [style, wide] of [["#fff", 4], [color, 2]]) {
      context.strokeStyle = style;
      context.lineWidth = wide;
      context.strokeRect(x * scale, y * scale, width * scale, height * scale);
    }
  };
  if (chosen !== null && bounds_of(chosen)[2] > 0) {
    frame(...bounds_of(chosen), "#d33");
  }
  if (pinned) {
    frame(pinned[0], pinned[1], 1, 1, "#2a5db0");
  }
}

// Histories of pixels: for each pixel of the areas a list of calls with outcomes, and its values.

const outcomes = ["drew", "blended", "refused", "outside", "made new buffers"];
const value_bytes = 7;
const history = data.history;
const values = bytes_of("values");
const history_starts = []; // of the pixels' values, in bytes
const history_lists = [];
if (history) {
  let next = 0;
  for (let i = 0; i < history.runs.length; i += 2) {
    for (let k = 0; k < history.runs[i]; ++k) {
      history_starts.push(next);
      history_lists.push(history.runs[i + 1]);
      next += value_bytes * (1 + history.lists[history.runs[i + 1]].length / 2);
    }
  }
}

function value_at(place) {
  const [kind, a, b, c, d, low, high] = values.subarray(place, place + value_bytes);
  const has_depth = kind & 4, hexadecimal = (level) => level.toString(16).padStart(2, "0");
  const rgb = kind & 1 ? data.palette[a] || "#000000" : "#" + [a, b, c].map(hexadecimal).join("");
  return {
    css: rgb,
    text: (kind & 3) === 0 ? "nothing" : kind & 1 ? "index " + a : rgb + (d === 255 ? "" : hexadecimal(d)),
    depth: has_depth ? low + 256 * high : null
  };
}

// The number of the pixel in the list of histories; -1 = not recorded.
function history_place(x, y) {
  let first = 0;
  for (const [left, top, width, height] of history ? history.areas : []) {
    if (x >= left && y >= top && x < left + width && y < top + height) {
      return first + (y - top) * width + x - left;
    }
    first += width * height;
  }
  return -1;
}

function swatch(value) {
  const node = made("span", "", "swatch");
  node.style.background = value.css;
  return node;
}

function show_history(x, y) {
  const target = element("history");
  target.replaceChildren();
  const place = history_place(x, y);
  if (place < 0) {
    target.append(history ? "This pixel's history is not recorded." : "");
    return;
  }
  const list = history.lists[history_lists[place]], table = document.createElement("table");
  let at = history_starts[place], before = value_at(at);
  for (let i = 0; i < list.length; i += 2) {
    const call = list[i], outcome = list[i + 1] & 7, writes = list[i + 1] & 8, rules = list[i + 1] >> 4;
    const after = value_at(at += value_bytes), cell = document.createElement("td"), row = document.createElement("tr");
    if (outcome === 2) {
      const names = history.rules.filter((_, rule) => rules >> rule & 1);
      const behind = after.depth - before.depth;
      cell.append("refused: " + (names.join(", ") || "several rules together"));
      if (names.includes("depth")) {
        cell.append(behind === 0 ? " (equal, " : " (" + Math.abs(behind) + (behind > 0 ? " behind, " : " before, "),
                    after.depth + " against " + before.depth + ")");
      }
      row.className = "refused";
    } else {
      if (writes) {
        cell.append(outcomes[outcome] + " ", swatch(after), after.text + " over " + before.text);
      } else {
        cell.append(outcome === 4 ? "changed the depth buffer" : "set the depth");
      }
      if (after.depth !== before.depth && after.depth !== null) {
        cell.append(", depth " + (before.depth === null ? "" : before.depth + " to ") + after.depth);
      }
      before = after;
    }
    row.append(made("td", call), made("td", kinds[calls.kind[call]]), cell);
    row.onclick = () => choose(call, true);
    table.append(row);
  }
  const head = document.createElement("div");
  head.append("Pixel " + x + "," + y + ": ", swatch(before),
              before.text + (before.depth === null ? "" : " at depth " + before.depth));
  target.append(head, list.length ? table : made("div", "No call draws there."));
}

let pinned = null;

function pixel_of(event) {
  const box = element("stack").getBoundingClientRect();
  const x = Math.floor((event.clientX - box.left) / zoom), y = Math.floor((event.clientY - box.top) / zoom);
  return x >= 0 && y >= 0 && x < image.width && y < image.height ? [x, y] : null;
}

function show_pixel(x, y) {
  const [red, green, blue, alpha] = pixels.canvas.width ? pixels.getImageData(Math.floor(x / image.step), Math.floor(y / image.step), 1, 1).data : [];
  // Browsers keep colours multiplied by alpha, so that those of translucent pixels are not exact.
  const about = alpha === 255 ? "" : "about ";
  element("place").textContent = x + "," + y + ": " + about + red + " " + green + " " + blue + (alpha === 255 ? "" : " " + alpha);
  show_history(x, y);
}

element("stack").addEventListener("mousemove", (event) => {
  const pixel = pixel_of(event);
  if (pixel && !pinned) {
    show_pixel(...pixel);
  }
});
element("stack").addEventListener("click", (event) => {
  const pixel = pixel_of(event);
  pinned = pinned || !pixel ? null : pixel;
  if (pixel) {
    show_pixel(...pixel);
  }
  draw_outline();
});
