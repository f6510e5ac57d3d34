// The program's standard input: a ring of bytes in shared memory with one writer, the page's thread, and one reader,
// the worker, which waits in it while the program has nothing to do.

const WRITTEN = 0; // bytes written so far, modulo 2^32; the reader sleeps on it
const READ = 1; // bytes read so far, modulo 2^32
const HEADER_BYTES = 8;
const CAPACITY = 1 << 16; // a power of two, so that the counters may wrap

export class InputRing {
  private readonly header: Int32Array;
  private readonly bytes: Uint8Array;

  constructor(readonly memory = new SharedArrayBuffer(HEADER_BYTES + CAPACITY)) {
    this.header = new Int32Array(memory, 0, HEADER_BYTES / Int32Array.BYTES_PER_ELEMENT);
    this.bytes = new Uint8Array(memory, HEADER_BYTES);
  }

  /** Writes as many of the bytes as there is room for and returns their number. */
  write(data: Uint8Array): number {
    const count = Math.min(data.length, CAPACITY - this.unread());
    const start = Atomics.load(this.header, WRITTEN);
    const end = start & (CAPACITY - 1);
    const first = Math.min(count, CAPACITY - end);
    this.bytes.set(data.subarray(0, first), end);
    this.bytes.set(data.subarray(first, count), 0);
    Atomics.store(this.header, WRITTEN, start + count);
    Atomics.notify(this.header, WRITTEN);
    return count;
  }

  /** Whether read() would return at once. */
  ready(): boolean {
    return this.unread() > 0;
  }

  /** Up to `size` bytes; waits while there are none. */
  read(size: number): Uint8Array {
    const start = Atomics.load(this.header, READ);
    // The signal of a write may come after its bytes were read.
    while (!this.ready()) Atomics.wait(this.header, WRITTEN, start);
    const count = Math.min(size, this.unread());
    const begin = start & (CAPACITY - 1);
    const first = Math.min(count, CAPACITY - begin);
    const data = new Uint8Array(count);
    data.set(this.bytes.subarray(begin, begin + first));
    data.set(this.bytes.subarray(0, count - first), first);
    Atomics.store(this.header, READ, start + count);
    return data;
  }

  private unread(): number {
    return (Atomics.load(this.header, WRITTEN) - Atomics.load(this.header, READ)) >>> 0;
  }
}
