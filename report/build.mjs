// Bundles the pages, each into one HTML file: build.mjs [FOLDER], by default build/ of the repository.
import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const packages = join(here, 'node_modules');
const out = resolve(process.argv[2] ?? join(here, '../build'));

const PAGES = [
  { name: 'report', sources: 'src', marker: '@KINORA_RUN_DATA@' },
  { name: 'study', sources: '../study/page', marker: '@KINORA_STUDY_DATA@' },
];

const hash = (text) => `sha256-${createHash('sha256').update(text).digest('base64')}`;

/** The licences of the packages that a bundle holds. */
function licencesOf(metafile) {
  const names = Object.keys(metafile.inputs).map((file) => /node_modules\/([^/]+)\//.exec(file)?.[1]);
  return [...new Set(names.filter(Boolean))]
    .sort()
    .map((name) => `${name}\n\n${readFileSync(join(packages, name, 'LICENSE'), 'utf8').trim()}`)
    .join('\n\n');
}

async function bundle({ name, sources, marker }) {
  const result = await build({
    entryPoints: [join(here, sources, 'main.ts')],
    bundle: true,
    minify: true,
    write: false,
    metafile: true,
    outdir: 'bundle',
    format: 'iife',
    target: 'es2022',
    charset: 'ascii',
    legalComments: 'inline',
    logLevel: 'warning',
    nodePaths: [packages],
  });
  const textOf = (extension) => result.outputFiles.find((file) => file.path.endsWith(extension)).text.trim();
  const script = textOf('.js');
  const style = textOf('.css');
  // esbuild writes no such thing; were it there, the browser would end the element in the middle.
  if (/<\/script|<!--/i.test(script) || /<\//.test(style))
    throw new Error('the bundle holds text that ends its own element');

  const parts = {
    SCRIPT_HASH: hash(script),
    STYLE_HASH: hash(style),
    STYLE: style,
    SCRIPT: script,
    LICENCES: licencesOf(result.metafile),
  };
  const page = readFileSync(join(here, sources, 'page.html'), 'utf8').replace(
    /@(SCRIPT_HASH|STYLE_HASH|STYLE|SCRIPT|LICENCES)@/g,
    (_, part) => parts[part],
  );
  if (page.split(marker).length !== 2) throw new Error(`the ${name} page must hold ${marker} exactly once`);
  writeFileSync(join(out, `${name}.html`), page);
}

mkdirSync(out, { recursive: true });
for (const page of PAGES) await bundle(page);
