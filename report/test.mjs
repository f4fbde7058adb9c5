// Checks the types, bundles the tests of tests/report and tests/study and runs them: npm test [-- FILTER]. The browser tests need
// kinora-report (KINORA_REPORT_TOOL, by default the native build's) and Debian's chromium.
import { execFileSync, spawnSync } from 'node:child_process';
import { readdirSync, rmSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { build } from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const folders = ['../tests/report', '../tests/study'].map((folder) => join(here, folder));
// Among the packages, so that the tests find those that are not bundled.
const bundled = join(here, 'node_modules/.tests');

execFileSync(process.execPath, [join(here, 'node_modules/typescript/bin/tsc'), '--noEmit', '-p', here], {
  stdio: 'inherit',
});
rmSync(bundled, { recursive: true, force: true });
await build({
  entryPoints: folders
    .flatMap((folder) => readdirSync(folder).map((name) => join(folder, name)))
    .filter((file) => file.endsWith('.test.ts') && file.includes(process.argv[2] ?? '')),
  bundle: true,
  outdir: bundled,
  outExtension: { '.js': '.mjs' },
  format: 'esm',
  platform: 'node',
  target: 'node18',
  external: ['playwright-core'],
  nodePaths: [join(here, 'node_modules')],
  sourcemap: 'inline',
  logLevel: 'warning',
});
const files = readdirSync(bundled, { recursive: true })
  .filter((name) => name.endsWith('.mjs'))
  .map((name) => join(bundled, name));
const { status } = spawnSync(process.execPath, ['--enable-source-maps', '--test', '--test-reporter=spec', ...files], {
  stdio: 'inherit',
});
process.exit(status ?? 1);
