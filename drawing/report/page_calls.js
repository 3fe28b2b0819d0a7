// The page's script, second part: the list of calls and what belongs to the chosen one.

const row_height = 52;
const thumbnail_places = new Map(thumbnails.calls.map((call, place) => [call, place]));
const atlas = document.getElementById("atlas");
let order = [], sorted_by = null, descends = true, chosen = null;

const columns = [
  {name: "call", of: (call) => call, ascends: true}, {name: "", text: true}, {name: "kind", text: true},
  {name: "points", of: (call) => calls.points[call]}, {name: "colours", of: (call) => calls.colors[call]},
  {name: "depths", of: (call) => calls.depths[call]}, {name: "time", of: (call) => times ? times[call] : 0}
];

// What the call changed; for a call without a thumbnail its bounds in the image.
function draw_thumbnail(canvas, call) {
  canvas.width = thumbnails.width;
  canvas.height = thumbnails.height;
  const context = canvas.getContext("2d"), place = thumbnail_places.get(call);
  const {width, height} = thumbnails;
  context.imageSmoothingEnabled = false;
  if (place !== undefined) {
    context.drawImage(atlas, place % thumbnails.columns * width, Math.floor(place / thumbnails.columns) * height, width, height,
                      0, 0, width, height);
    return;
  }
  const [x, y, w, h] = bounds_of(call);
  if (w > 0) {
    const scale = Math.min(width / image.width, height / image.height);
    context.fillStyle = "#f0f0f0";
    context.fillRect(0, 0, image.width * scale, image.height * scale);
    context.fillStyle = "#d33";
    context.fillRect(x * scale, y * scale, Math.max(w * scale, 2), Math.max(h * scale, 2));
  }
}

function row_of(call, place) {
  const row = made("div", "", call === chosen ? "row chosen" : "row");
  row.style.top = place * row_height + "px";
  const canvas = document.createElement("canvas"), text = made("span", kinds[calls.kind[call]], "text");
  draw_thumbnail(canvas, call);
  text.append(made("small", renditions[calls.rendition[call]]));
  const amount = (value) => made("span", value ? number(value) : "–", value ? "" : "nothing");
  const time = made("span", times ? time_text(times[call]) : "", "time");
  time.style.setProperty("--share", times && longest ? 100 * times[call] / longest + "%" : "0");
  row.append(made("span", call), canvas, text, amount(calls.points[call]), amount(calls.colors[call]),
             amount(calls.depths[call]), time);
  row.onclick = () => choose(call, false);
  return row;
}

function draw_rows() {
  const list = element("list"), rows = element("rows");
  rows.style.height = order.length * row_height + "px";
  const first = Math.max(0, Math.floor(list.scrollTop / row_height) - 2);
  const end = Math.min(order.length, first + Math.ceil(list.clientHeight / row_height) + 5);
  rows.replaceChildren(...order.slice(first, end).map((call, i) => row_of(call, first + i)));
}

function choose_rows() {
  const words = element("search").value.toLowerCase(), only_changing = element("changing").checked;
  const matches = (texts) => texts.map((text) => text.toLowerCase().includes(words));
  const kind_matches = matches(kinds), rendition_matches = matches(renditions);
  order = [];
  for (let call = 0; call < count; ++call) {
    if ((kind_matches[calls.kind[call]] || rendition_matches[calls.rendition[call]]) &&
        (!only_changing || calls.colors[call] + calls.depths[call] > 0)) {
      order.push(call);
    }
  }
  if (sorted_by) {
    const sign = descends ? -1 : 1;
    order.sort((a, b) => sign * (sorted_by.of(a) - sorted_by.of(b)) || a - b);
  }
  element("found").textContent = number(order.length) + (order.length === 1 ? " call" : " calls");
  draw_heads();
  draw_rows();
}

function draw_heads() {
  element("heads").replaceChildren(...columns.map((column) => {
    const head = made("span", column.name, (column.text ? "text" : "") + (column.of ? " sorts" : "") +
                                               (column === sorted_by ? " sorted" : ""));
    if (column.of) {
      head.onclick = () => {
        descends = column === sorted_by ? !descends : !column.ascends;
        sorted_by = column;
        choose_rows();
      };
    }
    return head;
  }));
}

function show_details(call) {
  const canvas = document.createElement("canvas"), [x, y, width, height] = bounds_of(call);
  draw_thumbnail(canvas, call);
  canvas.style.width = 3 * thumbnails.width + "px";
  const lines = ["call " + call + ": " + kinds[calls.kind[call]], renditions[calls.rendition[call]],
    calls.points[call] ? number(calls.points[call]) + " points" : "",
    width > 0 ? "changed " + number(calls.colors[call]) + " colours and " + number(calls.depths[call]) + " depths in columns " +
                x + " to " + (x + width - 1) + ", rows " + y + " to " + (y + height - 1)
              : "changed nothing",
    times ? time_text(times[call]) : ""];
  element("details").replaceChildren(canvas, ...lines.filter((line) => line).map((line) => made("div", line)));
}

// scrolls: to its row, which a search may have left out.
function choose(call, scrolls) {
  chosen = call;
  const list = element("list");
  if (scrolls && !order.includes(call)) {
    element("search").value = "";
    element("changing").checked = false;
    choose_rows();
  }
  const top = order.indexOf(call) * row_height;
  if (scrolls && (top < list.scrollTop || top + row_height > list.scrollTop + list.clientHeight)) {
    list.scrollTop = top - list.clientHeight / 2;
  }
  show_details(call);
  draw_rows();
  draw_outline();
  draw_timeline();
}

element("list").addEventListener("scroll", draw_rows);
element("search").addEventListener("input", choose_rows);
element("changing").addEventListener("change", choose_rows);
window.addEventListener("resize", draw_rows);
document.addEventListener("keydown", (event) => {
  const step = {ArrowDown: 1, ArrowUp: -1, PageDown: 10, PageUp: -10}[event.key];
  if (event.target.id === "search") {
    return;
  }
  if (step && order.length) {
    const at = chosen === null ? -1 : order.indexOf(chosen);
    choose(order[Math.min(Math.max(at + step, 0), order.length - 1)], true);
    event.preventDefault();
  } else if (event.key === "+" || event.key === "-") {
    next_zoom(event.key === "+");
  } else if (event.key === "Escape") {
    pinned = null;
    draw_outline();
  }
});

function draw_kinds() {
  const sums = kinds.map((name) => ({name, calls: 0, points: 0, colors: 0, depths: 0, time: 0}));
  for (let call = 0; call < count; ++call) {
    const sum = sums[calls.kind[call]];
    sum.calls += 1;
    sum.points += calls.points[call];
    sum.colors += calls.colors[call];
    sum.depths += calls.depths[call];
    sum.time += times ? times[call] : 0;
  }
  const table = document.querySelector("#kinds table");
  const row = (tag, cells) => {
    const line = document.createElement("tr");
    line.append(...cells.map((cell) => made(tag, cell)));
    table.append(line);
  };
  row("th", ["kind", "calls", "points", "colours", "depths", "time"]);
  sums.sort((a, b) => b.time - a.time || b.calls - a.calls);
  for (const sum of sums) {
    row("td", [sum.name, number(sum.calls), number(sum.points), number(sum.colors), number(sum.depths),
               times ? time_text(sum.time) : ""]);
  }
}

async function begin() {
  await Promise.all([...document.images].map((each) => each.decode().catch(() => null)));
  [pixels.canvas.width, pixels.canvas.height] = [planes[0].naturalWidth, planes[0].naturalHeight];
  pixels.drawImage(planes[0], 0, 0);
  show_plane(0);
  const room = element("view").clientWidth - 2;
  set_zoom(image.width <= room ? Math.max(1, Math.min(Math.floor(room / image.width), Math.floor(480 / image.height)))
                               : room / image.width);
  choose_rows();
  draw_timeline();
  draw_kinds();
  document.body.dataset.ready = "yes";
}

begin();
