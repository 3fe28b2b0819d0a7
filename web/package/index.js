// Models, maps and recordings.
import {contentOf, imageOf, InputError, lazyModule} from "./module.js";
import {recordingFunctions} from "./recordings.js";

export {InputError};

const loaded = lazyModule("vorna_web");
export const {openRecording, replay, hash} = recordingFunctions(loaded);

// What JavaScript no longer knows is closed, and its files are removed.
const close = ({module, handle, folder}) => {
  if (handle !== undefined) {
    module.call("vorna_close_model", handle);
  }
  if (folder !== undefined) {
    module.call("vorna_remove_files", folder);
  }
};
const finished = new FinalizationRegistry(close);

/** What was read: it can be drawn again and again. */
class Drawable {
  #held;

  constructor(held) {
    this.#held = held;
    finished.register(this, held, this);
  }

  draw(options = {}) {
    return imageOf(this.plane(options));
  }

  close() {
    finished.unregister(this);
    close(this.#held);
  }
}

/** A model. Its files stay in the module's memory, since images of textures are read when they are drawn. */
class Model extends Drawable {
  #module;
  #handle;

  /** answer: of the function that has opened the model. */
  constructor(module, {handle, text}, folder) {
    super({module, handle, folder});
    this.#module = module;
    this.#handle = handle;
    this.kind = "model";
    // Numbers of triangles, lines and points, a sphere around all, the axis that points up, and warnings.
    Object.assign(this, JSON.parse(text));
  }

  /** The drawn plane. keeps: whether the next image with other options for the camera only shall be faster. */
  plane(options = {}, keeps = true) {
    return this.#module.call("vorna_draw_model", this.#handle, JSON.stringify(options), keeps).colors;
  }
}

/** A map or drawing, which is read again for every image. */
class Drawing extends Drawable {
  #module;
  #file;

  constructor(module, file, folder) {
    super({module, folder});
    this.#module = module;
    this.#file = file;
    this.kind = "map";
    this.warnings = [];
  }

  plane(options = {}) {
    const {text, colors} = this.#module.call("vorna_draw_map", JSON.stringify({...options, file: this.#file}));
    this.warnings = JSON.parse(text);
    return colors;
  }
}

let folders = 0;

const isArrays = (model) => model.positions !== undefined;

// Numbers of three a vertex as 32-bit floats, or of any other type of elements.
function elements(name, values, Type, perVertex, vertices) {
  const flat = values instanceof Type ? values : Type.from(ArrayBuffer.isView(values) ? values : values.flat());
  if (flat.length % perVertex !== 0 || (vertices !== undefined && flat.length !== vertices * perVertex)) {
    const expected = vertices === undefined ? `a multiple of ${perVertex}` : vertices * perVertex;
    throw new InputError(`${name}: expected ${expected} numbers, found ${flat.length}`);
  }
  return flat;
}

function openArrays(module, {positions, normals, colors, indices}) {
  const points = elements("positions", positions, Float32Array, 3);
  const vertices = points.length / 3;
  if (!points.every(Number.isFinite)) {
    throw new InputError("positions: expected finite numbers");
  }
  const lists = {
    positions: [points, 3],
    normals: normals && [elements("normals", normals, Float32Array, 3, vertices), 3],
    // Red, green, blue and alpha from 0 to 255; the module has blue first.
    colors: colors && [elements("colors", colors, Uint8Array, 4, vertices).map((_, i, all) => all[i % 4 === 3 ? i : i - (i % 4) + 2 - (i % 4)]), 4],
    indices: [elements("indices", indices ?? Uint32Array.from({length: vertices - (vertices % 3)}, (_, i) => i), Uint32Array, 3), 1],
  };
  const kept = {};
  try {
    for (const [name, list] of Object.entries(lists)) {
      if (list) {
        const [{buffer, byteOffset, byteLength, length}, each] = list;
        kept[name] = [module.keep(new Uint8Array(buffer, byteOffset, byteLength)), length / each];
      }
    }
    return new Model(module, module.call("vorna_open_mesh", JSON.stringify(kept)));
  } finally {
    Object.values(kept).forEach(([address]) => module.release(address));
  }
}

/**
 * Reads a model, a map or a drawing: the content of a file, several files of which the first one names the others, or arrays.
 * crease: degrees between faces that are shaded as one surface.
 */
export async function open(model, {name, crease} = {}) {
  const module = await loaded();
  if (isArrays(model)) {
    return openArrays(module, model);
  }
  const single = await contentOf(model);
  const given = single ? [[name ?? (typeof File !== "undefined" && model instanceof File ? model.name : "model"), single]]
                       : await Promise.all(Object.entries(model).map(async ([key, value]) => [key, await contentOf(value)]));
  if (given.length === 0 || given.some(([, bytes]) => !bytes)) {
    throw new InputError("model: expected the content of a file, files by name, or arrays with positions");
  }
  const folder = String(++folders);
  try {
    for (const [file, bytes] of given) {
      module.call("vorna_add_file", `${folder}/${file}`, bytes);
    }
    const file = `${folder}/${name ?? given[0][0]}`;
    return module.call("vorna_is_map", file).handle
      ? new Drawing(module, file, folder)
      : new Model(module, module.call("vorna_open_model", JSON.stringify({file, crease})), folder);
  } catch (error) {
    module.call("vorna_remove_files", folder);
    throw error;
  }
}

/** An image of a model, a map or a drawing. */
export async function render(model, {name, crease, ...options} = {}) {
  const opened = await open(model, {name, crease});
  try {
    return imageOf(opened.plane(options, false));
  } finally {
    opened.close();
  }
}
