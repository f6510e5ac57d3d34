import { readdirSync, readFileSync } from "node:fs";
import { defineConfig, type Plugin } from "vite";

// Both headers together give the page a SharedArrayBuffer, through which commands reach a running search.
const headers = {
  "Cross-Origin-Opener-Policy": "same-origin",
  "Cross-Origin-Embedder-Policy": "require-corp",
};

const read = (path: string): string => readFileSync(new URL(path, import.meta.url), "utf8");

/** The licences of all that is bundled, each as its own package has it, and that of the pieces. */
function licences(): string {
  const { dependencies: ofPage } = JSON.parse(read("package.json"));
  const { dependencies: ofEngine } = JSON.parse(read("../engine/package.json"));
  const names = Object.keys({ ...ofPage, ...ofEngine }).filter((name) => name !== "brindlemoth-engine");
  const texts = names.map((name) => {
    const folder = `../node_modules/${name}/`;
    const files = readdirSync(new URL(folder, import.meta.url)).filter((file) => /^licen[cs]e/i.test(file));
    if (files.length === 0) throw new Error(`The package ${name} has no file with its licence.`);
    return `${name} ${JSON.parse(read(`${folder}package.json`)).version}\n\n${files.map((file) => read(folder + file)).join("\n")}`;
  });
  const [, pieces = ""] = /<!--(.*?)-->/s.exec(read("../node_modules/cm-chessboard/assets/pieces/standard.svg")) ?? [];
  return [...texts, `${pieces.trim()}\n\n${read("CC-BY-SA-3.0.txt")}`].join(`\n${"=".repeat(80)}\n\n`);
}

const licenceFile: Plugin = {
  name: "licence-file",
  generateBundle() {
    this.emitFile({ type: "asset", fileName: "licences.txt", source: licences() });
  },
};

export default defineConfig({
  base: "./",
  build: { target: "es2022", assetsInlineLimit: 0 },
  plugins: [licenceFile],
  worker: { format: "es" },
  server: { headers },
  preview: { headers, host: "127.0.0.1", port: 8417 },
});
