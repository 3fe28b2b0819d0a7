// Recordings of a module that can replay them.
import {contentOf, imageOf, InputError} from "./module.js";

const finished = new FinalizationRegistry(({module, handle}) => module.call("vorna_close_recording", handle));

/** A recording that was read: its calls can be drawn again and again. */
export class Recording {
  #module;
  #handle;

  constructor(module, bytes) {
    const {handle, text} = module.call("vorna_open_recording", bytes);
    this.#module = module;
    this.#handle = handle;
    /** The number of calls. */
    this.calls = JSON.parse(text).calls;
    finished.register(this, {module, handle}, this);
  }

  /** Colours and depths as the renderer has them, and what happened besides drawing. */
  planes(options = {}) {
    const {text, colors, depths} = this.#module.call("vorna_replay", this.#handle, JSON.stringify(options));
    return {colors, depths, report: JSON.parse(text)};
  }

  /** What the recording shows after its last call, or after the call `last`. */
  replay(options = {}) {
    return imageOf(this.planes(options).colors);
  }

  close() {
    finished.unregister(this);
    this.#module.call("vorna_close_recording", this.#handle);
  }
}

/** The functions of a package for one module. */
export function recordingFunctions(loaded) {
  const openRecording = async (recording) => {
    const bytes = (await contentOf(recording)) ?? (await contentOf(JSON.stringify(recording)));
    if (!bytes) {
      throw new InputError("recording: expected a document, as text, bytes or an object");
    }
    return new Recording(await loaded(), bytes);
  };
  const replay = async (recording, options = {}) => {
    const opened = await openRecording(recording);
    try {
      return opened.replay(options);
    } finally {
      opened.close();
    }
  };
  const hash = async (image) => {
    const bytes = await contentOf(image.data ?? image);
    return (await loaded()).call("vorna_hash", bytes).text;
  };
  return {openRecording, replay, hash};
}
