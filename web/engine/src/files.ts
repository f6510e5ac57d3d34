// The program's files: read-only, in memory or behind a Blob, none of which is copied as a whole.
import { Directory, Fd, Inode, wasi } from "@bjorn3/browser_wasi_shim";
import type { Files, FileSource } from "./messages.js";

// Exists in the workers of browsers alone, where Blobs come to the program as they are.
declare class FileReaderSync {
  readAsArrayBuffer(blob: Blob): ArrayBuffer;
}

// The largest piece of a Blob that is read at once: one table would otherwise be in memory twice.
const MAX_PIECE = 1 << 22;

function readPiece(source: FileSource, begin: number, end: number): Uint8Array {
  if (source instanceof Uint8Array) return source.subarray(begin, end);
  const piece = source.slice(begin, Math.min(end, begin + MAX_PIECE));
  return new Uint8Array(new FileReaderSync().readAsArrayBuffer(piece));
}

// The program reads a file from its start to its end, or at given places, and never seeks.
class OpenSource extends Fd {
  private position = 0n;

  constructor(private readonly file: SourceFile) {
    super();
  }

  override fd_fdstat_get(): { ret: number; fdstat: wasi.Fdstat } {
    return { ret: wasi.ERRNO_SUCCESS, fdstat: new wasi.Fdstat(wasi.FILETYPE_REGULAR_FILE, 0) };
  }

  override fd_filestat_get(): { ret: number; filestat: wasi.Filestat } {
    return { ret: wasi.ERRNO_SUCCESS, filestat: this.file.stat() };
  }

  override fd_pread(size: number, offset: bigint): { ret: number; data: Uint8Array } {
    const begin = Number(offset);
    try {
      return { ret: wasi.ERRNO_SUCCESS, data: readPiece(this.file.source, begin, begin + size) };
    } catch {
      return { ret: wasi.ERRNO_IO, data: new Uint8Array() }; // changed or removed since it was given
    }
  }

  override fd_read(size: number): { ret: number; data: Uint8Array } {
    const result = this.fd_pread(size, this.position);
    this.position += BigInt(result.data.length);
    return result;
  }
}

class SourceFile extends Inode {
  constructor(readonly source: FileSource) {
    super();
  }

  path_open(): { ret: number; fd_obj: Fd } {
    return { ret: wasi.ERRNO_SUCCESS, fd_obj: new OpenSource(this) };
  }

  stat(): wasi.Filestat {
    const size = this.source instanceof Uint8Array ? this.source.length : this.source.size;
    return new wasi.Filestat(this.ino, wasi.FILETYPE_REGULAR_FILE, BigInt(size));
  }
}

/** The contents of the root directory, with a directory for each part of a name before a slash. */
export function fileTree(files: Files): Map<string, Inode> {
  const root = new Map<string, Inode>();
  for (const [path, source] of Object.entries(files)) {
    const parts = path.split("/").filter((part) => part !== "");
    const name = parts.pop() ?? "";
    let contents = root;
    for (const part of parts) {
      const found = contents.get(part);
      const directory = found instanceof Directory ? found : new Directory(new Map());
      contents.set(part, directory);
      contents = directory.contents;
    }
    contents.set(name, new SourceFile(source));
  }
  return root;
}
