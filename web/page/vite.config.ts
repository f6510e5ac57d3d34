import { defineConfig } from "vite";

// Both headers together give the page a SharedArrayBuffer, through which commands reach a running search.
const headers = {
  "Cross-Origin-Opener-Policy": "same-origin",
  "Cross-Origin-Embedder-Policy": "require-corp",
};

export default defineConfig({
  base: "./",
  build: { target: "es2022", assetsInlineLimit: 0 },
  worker: { format: "es" },
  server: { headers },
  preview: { headers, host: "127.0.0.1", port: 8417 },
});
