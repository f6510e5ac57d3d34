// What a program for Node does in its own way: starting the worker and reading files.
import { readFile } from "node:fs/promises";
import { Worker } from "node:worker_threads";
import type { Files, Report, Start } from "./messages.js";

export function startWorker(start: Start, take: (report: Report) => void): { terminate(): void } {
  const worker = new Worker(new URL("./worker_node.js", import.meta.url));
  worker.on("message", take);
  worker.on("error", (error) => take({ status: 1, message: String(error) }));
  worker.postMessage(start);
  return { terminate: () => void worker.terminate() };
}

export async function readProgram(url: string | URL): Promise<BufferSource> {
  return new Uint8Array(await readFile(url));
}

/** The files in a form that the worker can read, which a Blob is not in Node. */
export async function readableFiles(files: Files): Promise<Files> {
  const readable: Files = {};
  for (const [name, source] of Object.entries(files)) {
    readable[name] = source instanceof Blob ? new Uint8Array(await source.arrayBuffer()) : source;
  }
  return readable;
}
