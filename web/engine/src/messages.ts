// What the page's thread and the worker say to each other.

/** Files by their paths. A Blob is read when the program opens it. */
export type FileSource = Blob | Uint8Array;
export type Files = Record<string, FileSource>;

/** The one message to the worker. */
export interface Start {
  program: WebAssembly.Module;
  input: SharedArrayBuffer; // of an InputRing
  files: Files;
}

/** Messages of the worker: a line that the program printed, or how it ended. */
export type Report = { line: string } | { status: number; message: string };
