// What a program for Node does in its own way: starting the worker and reading the program's file.
import { readFile } from 'node:fs/promises';
import { Worker } from 'node:worker_threads';
import type { Report, Start } from './messages.js';

export function startWorker(start: Start, take: (report: Report) => void): { terminate(): void } {
  const worker = new Worker(new URL('./worker_node.js', import.meta.url));
  worker.on('message', take);
  worker.on('error', (error) => take({ kind: 'ended', status: 1, message: String(error) }));
  worker.postMessage(start);
  return { terminate: () => void worker.terminate() };
}

export async function readProgram(url: string | URL): Promise<BufferSource> {
  return new Uint8Array(await readFile(url));
}

/** Files as the worker reads them: Node has no way to read a Blob there. */
export async function readableFiles(files: Start['files']): Promise<Start['files']> {
  const entries = Object.entries(files).map(async ([name, source]) =>
    [name, source instanceof Blob ? new Uint8Array(await source.arrayBuffer()) : source] as const);
  return Object.fromEntries(await Promise.all(entries));
}
