// Recordings, drawn by the module beside this file.
import {lazyModule} from "./module.js";
import {recordingFunctions} from "./recordings.js";

export {InputError} from "./module.js";
export const {openRecording, replay, hash} = recordingFunctions(lazyModule("vorna_replayer"));
