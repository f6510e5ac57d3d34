// What a web page does in its own way: starting the worker and reading files.
import type { Files, Report, Start } from "./messages.js";

export function startWorker(start: Start, take: (report: Report) => void): { terminate(): void } {
  const worker = new Worker(new URL("./worker_browser.js", import.meta.url), { type: "module" });
  worker.onmessage = (event: MessageEvent<Report>) => take(event.data);
  worker.onerror = (event) => take({ status: 1, message: event.message ?? "" });
  worker.postMessage(start);
  return worker;
}

export async function readProgram(url: string | URL): Promise<BufferSource> {
  const answer = await fetch(url);
  if (!answer.ok) throw new Error(`${answer.status} ${answer.statusText}`);
  return answer.arrayBuffer();
}

/** The files in a form that the worker can read, which they are. */
export async function readableFiles(files: Files): Promise<Files> {
  return files;
}
