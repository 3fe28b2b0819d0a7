// A module of WebAssembly and its memory. Functions of the module return the address of an answer, whose members are 32-bit integers
// in the order of web/src/answer.h.

const kinds = ["colors", "indices", "depths", "faces"];
const planeSize = 6; // integers

/** Wrong input or settings: the message says what was expected. */
export class InputError extends Error {
  name = "InputError";
}

/** The bytes of a file beside this one. */
async function bytesOf(name) {
  const url = new URL(name, import.meta.url);
  if (url.protocol === "file:" && typeof process !== "undefined") {
    return (await import("node:fs/promises")).readFile(url);
  }
  const response = await fetch(url);
  if (!response.ok) {
    throw new Error(`${url}: ${response.status} ${response.statusText}`);
  }
  return new Uint8Array(await response.arrayBuffer());
}

/** The instance of a module, made when it is first asked for. */
export function lazyModule(name) {
  let made;
  return () => (made ??= Promise.all([import(`./${name}.mjs`), bytesOf(`${name}.wasm`)]).then(
    async ([{default: make}, wasmBinary]) => new Module(await make({wasmBinary}))));
}

const encoder = new TextEncoder(), decoder = new TextDecoder();

class Module {
  #functions;

  constructor(functions) {
    this.#functions = functions;
  }

  /**
   * Calls a function of the module. Arguments that are texts or bytes are copied into its memory, where the function gets address and
   * size of each. Returns text and handle of the answer, and copies of its planes.
   */
  call(name, ...values) {
    const taken = [];
    const numbers = values.flatMap((value) => {
      if (typeof value === "number" || typeof value === "boolean") {
        return [Number(value)];
      }
      const bytes = typeof value === "string" ? encoder.encode(value) : value;
      taken.push(this.keep(bytes));
      return [taken.at(-1), bytes.byteLength];
    });
    try {
      return this.#answerAt(this.#functions[`_${name}`](...numbers));
    } finally {
      taken.forEach((address) => this.release(address));
    }
  }

  /** A copy of the bytes in the module's memory. */
  keep(bytes) {
    const address = this.#functions._vorna_allocate(bytes.byteLength);
    if (address === 0) {
      throw new Error("out of memory");
    }
    this.#functions.HEAPU8.set(bytes, address);
    return address;
  }

  release(address) {
    this.#functions._vorna_free(address);
  }

  #bytes(address, size) {
    return this.#functions.HEAPU8.slice(address, address + size);
  }

  #answerAt(address) {
    const at = new Int32Array(this.#functions.HEAPU8.buffer, address, 4 + 2 * planeSize);
    const [status, text, textSize, handle] = at;
    const answer = {text: decoder.decode(this.#bytes(text >>> 0, textSize)), handle};
    if (status !== 0) {
      throw status === 1 ? new InputError(answer.text) : new Error(answer.text);
    }
    return {...answer, colors: this.#planeAt(at.subarray(4)), depths: this.#planeAt(at.subarray(4 + planeSize))};
  }

  #planeAt([kind, width, height, bytes, palette, paletteSize]) {
    if (kind < 0) {
      return null;
    }
    const pixelBytes = [4, 1, 2, 4][kind];
    return {kind: kinds[kind], width, height, bytes: this.#bytes(bytes >>> 0, width * height * pixelBytes),
            palette: this.#bytes(palette >>> 0, 4 * paletteSize)};
  }
}

/** The colours of a plane as an ImageData; where there is no such class an object with its members. */
export function imageOf({kind, width, height, bytes, palette}) {
  let data = new Uint8ClampedArray(bytes.buffer);
  if (kind === "indices") {
    data = new Uint8ClampedArray(4 * width * height);
    bytes.forEach((index, i) => {
      data.set([palette[4 * index + 2], palette[4 * index + 1], palette[4 * index], palette[4 * index + 3]], 4 * i);
    });
  }
  return typeof ImageData === "undefined" ? {width, height, data, colorSpace: "srgb"} : new ImageData(data, width, height);
}

/** Bytes of an ArrayBuffer, a view of one, a text or a Blob. */
export async function contentOf(value) {
  if (typeof value === "string") {
    return encoder.encode(value);
  }
  if (typeof Blob !== "undefined" && value instanceof Blob) {
    return new Uint8Array(await value.arrayBuffer());
  }
  if (value instanceof ArrayBuffer) {
    return new Uint8Array(value);
  }
  if (ArrayBuffer.isView(value)) {
    return new Uint8Array(value.buffer, value.byteOffset, value.byteLength);
  }
  return null;
}
