#!/usr/bin/env node
// usage: web-command.mjs PACKAGE [--kernels NAME] replay FILE [--color-raw FILE] [--depth-raw FILE] [--report FILE]
// Draws a recording with the npm package in a folder as the command does, for scripts/receipt.py. "-" is standard input.
import {readFileSync, writeFileSync} from "node:fs";
import {resolve} from "node:path";
import {pathToFileURL} from "node:url";

function parse(words) {
  const options = {}, files = [];
  for (let i = 0; i < words.length; ++i) {
    if (words[i].startsWith("--")) {
      options[words[i].slice(2)] = words[++i];
    } else {
      files.push(words[i]);
    }
  }
  return {options, files};
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
    const {openRecording} = await import(packageFile("index.js"));
    const recording = await openRecording(readFileSync(file === "-" ? 0 : file));
    const {colors, depths, report} = recording.planes({kernels});
    const outputs = {"color-raw": () => rawBytes(colors), "depth-raw": () => rawBytes(depths), report: () => JSON.stringify(report)};
    for (const [name, output] of Object.entries(outputs)) {
      if (options[name]) {
        writeFileSync(options[name], output());
      }
    }
  } else {
    throw new Error(`expected replay, found '${command}'`);
  }
} catch (error) {
  console.error(`web-command.mjs: ${error.message}`);
  process.exitCode = 1;
}
