// Bundles the page into one HTML file: build.mjs [OUT], by default build/report.html of the repository.
import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const out = resolve(process.argv[2] ?? join(here, '../build/report.html'));

const result = await build({
  entryPoints: [join(here, 'src/main.ts')],
  bundle: true,
  minify: true,
  write: false,
  outdir: 'bundle',
  format: 'iife',
  target: 'es2022',
  charset: 'ascii',
  legalComments: 'inline',
  logLevel: 'warning',
});

const textOf = (extension) => result.outputFiles.find((file) => file.path.endsWith(extension)).text.trim();
const script = textOf('.js');
const style = textOf('.css');
// esbuild writes no such thing; were it there, the browser would end the element in the middle.
if (/<\/script|<!--/i.test(script) || /<\//.test(style))
  throw new Error('the bundle holds text that ends its own element');
const hash = (text) => `sha256-${createHash('sha256').update(text).digest('base64')}`;

const licences = ['three', 'uplot']
  .map((name) => `${name}\n\n${readFileSync(join(here, 'node_modules', name, 'LICENSE'), 'utf8').trim()}`)
  .join('\n\n');

const parts = { SCRIPT_HASH: hash(script), STYLE_HASH: hash(style), STYLE: style, SCRIPT: script, LICENCES: licences };
const page = readFileSync(join(here, 'src/page.html'), 'utf8').replace(
  /@(SCRIPT_HASH|STYLE_HASH|STYLE|SCRIPT|LICENCES)@/g,
  (_, name) => parts[name],
);

const marker = '@KINORA_RUN_DATA@';
if (page.split(marker).length !== 2) throw new Error(`the page must hold ${marker} exactly once`);
mkdirSync(dirname(out), { recursive: true });
writeFileSync(out, page);
