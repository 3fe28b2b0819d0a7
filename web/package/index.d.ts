export type Content = ArrayBuffer | ArrayBufferView | Blob | string;

/** Wrong input or settings: the message, one line, says what was expected. */
export class InputError extends Error {}

export interface ReplayOptions {
  /** The calls that are made, counted from 0, `last` included; of earlier ones only those that set the renderer up are made. */
  first?: number;
  last?: number;
  kernels?: "wasm" | "portable";
}

export interface Recording {
  /** The number of calls. */
  readonly calls: number;
  /** What the recording shows. */
  replay(options?: ReplayOptions): ImageData;
  close(): void;
}

/** A document as text, bytes, also compressed by gzip, or an object. */
export type OpenRecording = (recording: Content | object) => Promise<Recording>;
export type Replay = (recording: Content | object, options?: ReplayOptions) => Promise<ImageData>;
/** SHA-256 of the samples, red, green, blue and alpha of each pixel, which the command prints too. */
export type Hash = (image: ImageData | ArrayBufferView) => Promise<string>;

export const openRecording: OpenRecording;
export const replay: Replay;
export const hash: Hash;
