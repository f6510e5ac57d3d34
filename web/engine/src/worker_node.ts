// The worker of a program for Node.
import { parentPort } from "node:worker_threads";
import type { Start } from "./messages.js";
import { runProgram } from "./program.js";

parentPort?.once("message", (start: Start) => {
  void runProgram(start, (report) => parentPort?.postMessage(report));
});
