// What the page's thread and the worker say to each other.

/** The contents of a file: a Blob is read piece by piece when the program asks for it. */
export type FileSource = Blob | Uint8Array;

/** The one message to the worker. */
export interface Start {
  program: WebAssembly.Module;
  input: SharedArrayBuffer; // of an InputRing
  files: Record<string, FileSource>;
}

/** Messages of the worker. */
export type Report =
  | { kind: 'lines'; lines: string[] }
  | { kind: 'ended'; status: number; message: string };
