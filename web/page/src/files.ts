// Takes the files that somebody gives to the page: an opening book and endgame tables.

const TABLE_NAME = /^K[QRBNP]*vK[QRBNP]*\.rtb[wz]$/;
export const BOOK_ENTRY_BYTES = 16;

export interface Given {
  book?: File;
  tables: File[];
  /** One sentence for each file that is of no use. */
  faults: string[];
}

async function filesOf(entry: FileSystemEntry): Promise<File[]> {
  if (entry.isFile) return [await new Promise<File>((done, failed) => (entry as FileSystemFileEntry).file(done, failed))];
  const reader = (entry as FileSystemDirectoryEntry).createReader();
  const files: File[] = [];
  // A folder is read in portions. An empty portion is the end.
  for (;;) {
    const entries = await new Promise<FileSystemEntry[]>((done, failed) => reader.readEntries(done, failed));
    if (entries.length === 0) return files;
    for (const inner of entries) files.push(...(await filesOf(inner)));
  }
}

/** All files of a drop, those inside dropped folders included. */
export async function droppedFiles(drop: DataTransfer): Promise<File[]> {
  const found = [...drop.items].map((item) => {
    const entry = item.webkitGetAsEntry();
    return entry?.isDirectory ? filesOf(entry) : (item.getAsFile() ?? []);
  });
  return (await Promise.all(found)).flat();
}

/** Sorts files by what they are, and makes sure that each can be read. `onStep` is told how many are done. */
export async function sortFiles(files: File[], onStep: (done: number) => void): Promise<Given> {
  const given: Given = { tables: [], faults: [] };
  for (const [at, file] of files.entries()) {
    const readable = await file.slice(0, BOOK_ENTRY_BYTES).arrayBuffer().catch(() => undefined);
    if (!readable?.byteLength) given.faults.push(`${file.name} is empty or cannot be read.`);
    else if (TABLE_NAME.test(file.name)) given.tables.push(file);
    else if (!file.name.endsWith(".bin")) given.faults.push(`${file.name} is neither a book nor an endgame table.`);
    else if (file.size % BOOK_ENTRY_BYTES !== 0) given.faults.push(`${file.name} is no Polyglot book.`);
    else given.book = file;
    onStep(at + 1);
  }
  return given;
}
