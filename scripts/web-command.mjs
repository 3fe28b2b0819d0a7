#!/usr/bin/env node
// usage: web-command.mjs PACKAGE [--kernels NAME] replay FILE [--color-raw FILE] [--depth-raw FILE] [--report FILE]
//        web-command.mjs PACKAGE [--kernels NAME] render FILE -o FILE --hash [OPTION...]
// Draws with the npm package in a folder, as the command does: so much of it that scripts/receipt.py can compare both. "-" is standard
// input. Nothing is written to the file of -o; options of threads and tiles are taken and change nothing.
import {readFileSync, readdirSync, writeFileSync} from "node:fs";
import {basename, dirname, resolve} from "node:path";
import {pathToFileURL} from "node:url";

const alone = new Set(["antialias", "axes", "hash", "labels", "orthographic"]);
const withoutEffect = new Set(["o", "hash", "threads", "tile-size"]);
const textOptions = new Set(["color", "background", "edgeColor", "water", "borderColor"]);

function parse(words) {
  const options = {}, files = [];
  for (let i = 0; i < words.length; ++i) {
    const [, name, value] = words[i].match(/^--?([a-z][a-z-]*)(?:=(.*))?$/s) ?? [];
    if (!name) {
      files.push(words[i]);
    } else if (value !== undefined) {
      options[name] = value;
    } else {
      options[name] = alone.has(name) || name === "edges" ? true : words[++i];
    }
  }
  return {options, files};
}

// As JavaScript has it: camel case, numbers, and lists of them.
function valueOf(name, text) {
  if (text === true || textOptions.has(name)) {
    return text;
  }
  if (/^\d+x\d+$/.test(text)) {
    return text.split("x").map(Number);
  }
  return /^[-+.,\deE]*\d[-+.,\deE]*$/.test(text) ? (text.includes(",") ? text.split(",").map(Number) : Number(text)) : text;
}

function renderOptions(options) {
  return Object.fromEntries(Object.entries(options).filter(([name]) => !withoutEffect.has(name)).map(([name, text]) => {
    const camel = name.replace(/-(.)/g, (_, letter) => letter.toUpperCase());
    return [camel, valueOf(camel, text)];
  }));
}

// Raw files of colours have blue first.
function rawBytes({kind, bytes}) {
  return kind === "colors" ? bytes.map((_, i, all) => (i % 4 === 3 || i % 4 === 1 ? all[i] : all[i - (i % 4) + 2 - (i % 4)])) : bytes;
}

const [folder, ...words] = process.argv.slice(2);
const packageFile = (name) => pathToFileURL(resolve(folder, name)).href;
try {
  const {options: {kernels, ...options}, files: [command, file]} = parse(words);
  if (command === "replay") {
    const {openRecording} = await import(packageFile("replay.js"));
    const recording = await openRecording(readFileSync(file === "-" ? 0 : file));
    const {colors, depths, report} = recording.planes({kernels});
    const outputs = {"color-raw": () => rawBytes(colors), "depth-raw": () => rawBytes(depths), report: () => JSON.stringify(report)};
    for (const [name, output] of Object.entries(outputs)) {
      if (options[name]) {
        writeFileSync(options[name], output());
      }
    }
  } else if (command === "render") {
    const {hash, open} = await import(packageFile("index.js"));
    // A model's folder holds what it names.
    const names = [basename(file), ...readdirSync(dirname(file)).filter((name) => /\.(mtl|png|jpe?g|tga|bmp)$/i.test(name))];
    const model = await open(Object.fromEntries(names.map((name) => [name, readFileSync(resolve(dirname(file), name))])));
    console.log(await hash(model.plane({kernels, ...renderOptions(options)}, false).bytes));
  } else {
    throw new Error(`expected replay or render, found '${command}'`);
  }
} catch (error) {
  console.error(`web-command.mjs: ${error.message}`);
  process.exitCode = 1;
}
