// The worker's work: runs the program to its end behind a WASI host whose standard input is the ring and whose standard
// output leaves as messages.
import { ConsoleStdout, Fd, PreopenDirectory, WASI, wasi } from "@bjorn3/browser_wasi_shim";
import { fileTree } from "./files.js";
import type { Report, Start } from "./messages.js";
import { InputRing } from "./ring.js";

class Input extends Fd {
  constructor(private readonly ring: InputRing) {
    super();
  }

  override fd_read(size: number): { ret: number; data: Uint8Array } {
    return { ret: wasi.ERRNO_SUCCESS, data: this.ring.read(size) };
  }
}

// The layout of the two records of poll_oneoff, in bytes.
const SUBSCRIPTION_SIZE = 48;
const SUBSCRIPTION_TYPE = 8;
const EVENT_SIZE = 32;
const EVENT_TYPE = 10;

/**
 * The part of poll_oneoff that the program uses and the WASI host lacks: whether standard input can be read, with a
 * clock that ends the call at once. It returns the event of the input, or of the clock.
 */
function pollInput(memory: WebAssembly.Memory, ring: InputRing, arguments_: number[]): number {
  const [subscriptions = 0, events = 0, count = 0, eventCount = 0] = arguments_;
  const view = new DataView(memory.buffer);
  const wanted = ring.ready() ? wasi.EVENTTYPE_FD_READ : wasi.EVENTTYPE_CLOCK;
  for (let i = 0; i < count; ++i) {
    const subscription = subscriptions + i * SUBSCRIPTION_SIZE;
    if (view.getUint8(subscription + SUBSCRIPTION_TYPE) !== wanted) continue;
    new Uint8Array(memory.buffer, events, EVENT_SIZE).fill(0);
    view.setBigUint64(events, view.getBigUint64(subscription, true), true); // the user data
    view.setUint8(events + EVENT_TYPE, wanted);
    view.setUint32(eventCount, 1, true);
    return wasi.ERRNO_SUCCESS;
  }
  return wasi.ERRNO_NOTSUP;
}

export async function runProgram(start: Start, report: (message: Report) => void): Promise<void> {
  const ring = new InputRing(start.input);
  const errors: string[] = [];
  const descriptors = [
    new Input(ring),
    ConsoleStdout.lineBuffered((line) => report({ line })),
    ConsoleStdout.lineBuffered((line) => errors.push(line)),
    new PreopenDirectory("/", fileTree(start.files)),
  ];
  const host = new WASI(["brindlemoth"], [], descriptors, { debug: false });
  const poll_oneoff = (...given: number[]): number => pollInput(host.inst.exports.memory, ring, given);
  let status = 1;
  try {
    const imports = { wasi_snapshot_preview1: { ...host.wasiImport, poll_oneoff } };
    const instance = await WebAssembly.instantiate(start.program, imports);
    status = host.start(instance as Parameters<WASI["start"]>[0]);
  } catch (error) {
    errors.push(String(error));
  }
  report({ status, message: errors.join("\n") });
}
