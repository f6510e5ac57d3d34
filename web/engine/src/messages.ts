// What the page's thread and the worker say to each other.

/** The contents of a file: a Blob is read piece by piece when the program asks for it. */
export type FileSource = Blob | Uint8Array;

/** Files by their paths. */
export type Files = Record<string, FileSource>;

/** The one message to the worker. */
export interface Start {
  program: WebAssembly.Module;
  input: SharedArrayBuffer; // of an InputRing
  files: Files;
}

/** Messages of the worker. */
export type Report = { kind: "lines"; lines: string[] } | { kind: "ended"; status: number; message: string };
