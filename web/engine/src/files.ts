// The program's files: read-only, in memory or behind a Blob, which is read whole when the program opens it.
import { Directory, type Fd, File, Inode, wasi } from "@bjorn3/browser_wasi_shim";
import type { Files, FileSource } from "./messages.js";

// Exists in the workers of browsers alone, where Blobs come to the program as they are.
declare class FileReaderSync {
  readAsArrayBuffer(blob: Blob): ArrayBuffer;
}

class BlobFile extends Inode {
  constructor(private readonly blob: Blob) {
    super();
  }

  path_open(oflags: number, rights: bigint, flags: number): { ret: number; fd_obj: Fd | null } {
    try {
      const bytes = new FileReaderSync().readAsArrayBuffer(this.blob);
      return new File(bytes, { readonly: true }).path_open(oflags, rights, flags);
    } catch {
      return { ret: wasi.ERRNO_IO, fd_obj: null }; // changed or removed since it was given
    }
  }

  stat(): wasi.Filestat {
    return new wasi.Filestat(this.ino, wasi.FILETYPE_REGULAR_FILE, BigInt(this.blob.size));
  }
}

function inodeOf(source: FileSource): Inode {
  if (!(source instanceof Uint8Array)) return new BlobFile(source);
  const file = new File([], { readonly: true });
  file.data = source; // which the constructor would copy
  return file;
}

/** The contents of the root directory, with a directory for each part of a name before a slash. */
export function fileTree(files: Files): Map<string, Inode> {
  const root = new Directory(new Map<string, Inode>());
  for (const [path, source] of Object.entries(files)) {
    const parts = path.split("/").filter((part) => part !== "");
    let directory = root;
    for (const part of parts.slice(0, -1)) {
      const inner = directory.contents.get(part) ?? new Directory(new Map());
      directory.contents.set(part, inner);
      directory = inner as Directory;
    }
    directory.contents.set(parts.at(-1) ?? "", inodeOf(source));
  }
  return root.contents;
}
