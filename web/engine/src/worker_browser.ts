// The worker of a web page.
import type { Start } from "./messages.js";
import { runProgram } from "./program.js";

addEventListener("message", (event: MessageEvent<Start>) => {
  void runProgram(event.data, (report) => postMessage(report));
});
