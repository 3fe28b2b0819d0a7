import type {Content, Hash, OpenRecording, Replay} from "./replay.js";

export {InputError} from "./replay.js";
export type {Content, Recording, ReplayOptions} from "./replay.js";

/** A text as the command has it (`#rgb`, `#rrggbb` or a common name), or channels from 0 to 255. */
export type Color = string | [number, number, number] | [number, number, number, number];
type Vector = [number, number, number];

export interface ImageOptions {
  /** Width and height; at first 1280 x 960. Of maps a height of 0 is chosen. */
  size?: [number, number];
  background?: Color | "transparent";
  /** Of models: makes the background a gradient from top to bottom. */
  lowerBackground?: Color;
  /** Bits a pixel: 8 are colours of a palette. */
  colors?: 8 | 32;
  /** Smooth lines. */
  antialias?: boolean;
  /** The mean of so many pixels each way, 1 to 8; 0 = chosen. */
  supersample?: number;
  /** Bytes that drawing may take; at first 1 GiB. */
  maxMemory?: number;
  /** `wasm`, at first, or `portable`: all of the same bytes. */
  kernels?: "wasm" | "portable";
}

export interface CameraOptions {
  view?: "iso" | "front" | "back" | "left" | "right" | "top" | "bottom";
  /** The model's axis that points up; at first the format's. */
  up?: "x" | "y" | "z" | "-x" | "-y" | "-z";
  orthographic?: boolean;
  zoom?: number;
  /** Vertical field of view in degrees. */
  fov?: number;
  /** Eye, target and the direction that points up, in the model's coordinates, instead of `view`. */
  camera?: [number, number, number, number, number, number] | [number, number, number, number, number, number, number, number, number];
}

export interface ModelOptions extends ImageOptions, CameraOptions {
  shading?: "auto" | "flat" | "gouraud" | "textured" | "wireframe" | "hidden-line";
  tint?: "lit" | "own" | "normals";
  cull?: boolean;
  light?: Vector;
  specular?: number;
  edges?: boolean | "all" | "feature";
  edgeColor?: Color;
  color?: Color;
  lineWidth?: number;
  pointSize?: number;
  axes?: boolean;
  scaleBar?: boolean;
  look?: "plain" | "studio";
}

type Dashes = false | "solid" | "dashed" | "dotted" | "dash-dot" | "dash-dot-dot" | "long-dashed" | number[];

export interface MapOptions extends ImageOptions {
  layer?: string;
  filter?: string;
  projection?: "equirectangular" | "mercator" | "plane";
  bbox?: [number, number, number, number];
  center?: [number, number];
  clipTo?: string;
  fill?: "auto" | "palette" | "own" | "none" | Color;
  fillBy?: string;
  classes?: "quantiles" | "equal" | "natural" | "categories";
  classCount?: number;
  ramp?: string;
  opacity?: number;
  water?: Color;
  graticule?: number;
  border?: Dashes;
  outline?: Dashes;
  borderColor?: Color;
  borderWidth?: number;
  casing?: Color;
  casingWidth?: number;
  markerColor?: Color;
  markerSize?: number;
}

/** Triangles as arrays. */
export interface Arrays {
  /** Three numbers a vertex. */
  positions: Float32Array | ArrayLike<number> | number[][];
  /** Three vertices a triangle; without, every three vertices are one. */
  indices?: Uint32Array | ArrayLike<number> | number[][];
  /** Three numbers a vertex; missing ones are computed. */
  normals?: Float32Array | ArrayLike<number> | number[][];
  /** Red, green, blue and alpha a vertex, 0 to 255; alpha 0 = no colour of its own. */
  colors?: Uint8Array | ArrayLike<number> | number[][];
}

export interface Reading {
  /** The name of the file, for messages and where its content does not tell the format; of several the one to draw. */
  name?: string;
  /** Degrees, 0 to 180, between faces that are shaded as one surface. */
  crease?: number;
}

/** What was read. It stays in the module's memory until `close`, or until nobody has the object any more. */
export interface Opened<Options> {
  readonly warnings: string[];
  draw(options?: Options): ImageData;
  close(): void;
}

export interface Model extends Opened<ModelOptions> {
  readonly kind: "model";
  readonly triangles: number;
  readonly lines: number;
  readonly points: number;
  /** A sphere around all of it. */
  readonly center: Vector;
  readonly radius: number;
  readonly up: string;
}

export interface Drawing extends Opened<MapOptions> {
  readonly kind: "map";
}

/** The content of a file, files by name of which the first is drawn, or arrays. */
export type Source = Content | Record<string, Content> | Arrays;

export function open(model: Source, reading?: Reading): Promise<Model | Drawing>;
export function render(model: Source, options?: ModelOptions & MapOptions & Reading): Promise<ImageData>;
export const openRecording: OpenRecording;
export const replay: Replay;
export const hash: Hash;
