// The browser that the tests of the pages share, and pages that must not complain.

import assert from 'node:assert/strict';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { chromium, type Browser, type Page } from 'playwright-core';

export const root = process.cwd().replace(/\/report$/, '');
export const tool = process.env.KINORA_REPORT_TOOL ?? join(root, 'build/native/bin/kinora-report');
const chromiumFile = process.env.KINORA_CHROMIUM ?? '/usr/bin/chromium';

export type WatchedPage = Page & { complaints: string[] };

/** Debian's Chromium; fails when it or the tool is not there. */
export function launch(): Promise<Browser> {
  for (const [what, file] of [
    ['kinora-report (set KINORA_REPORT_TOOL)', tool],
    ['chromium (set KINORA_CHROMIUM)', chromiumFile],
  ])
    assert.ok(existsSync(file), `${what} is not at ${file}`);
  return chromium.launch({
    executablePath: chromiumFile,
    args: [
      '--no-sandbox',
      '--disable-gpu',
      '--enable-unsafe-swiftshader',
      '--disable-quic',
      '--no-first-run',
      '--disable-background-networking',
      '--disable-component-update',
      '--disable-sync',
    ],
  });
}

/** Opens a page; whatever it complains of or asks the network for is written down. */
export async function openFile(
  browser: Browser,
  file: string,
  settings: Parameters<Browser['newPage']>[0] = {},
): Promise<WatchedPage> {
  const page = Object.assign(await browser.newPage({ viewport: { width: 1500, height: 950 }, ...settings }), {
    complaints: [] as string[],
  });
  page.on('console', (message) => {
    // Software rendering is slow to hand out its pictures, which only the tests ask for.
    if (!message.text().includes('GPU stall due to ReadPixels'))
      page.complaints.push(`${message.type()}: ${message.text()}`);
  });
  page.on('pageerror', (error) => page.complaints.push(error.message));
  page.on('dialog', (dialog) => {
    page.complaints.push(`dialog: ${dialog.message()}`);
    void dialog.dismiss();
  });
  page.on('request', (request) => {
    if (!request.url().startsWith('data:') && request.url() !== `file://${file}`) page.complaints.push(request.url());
  });
  await page.goto(`file://${file}`);
  return page;
}

/** Whatever the page has complained of fails the test. */
export async function close(page: WatchedPage): Promise<void> {
  assert.deepEqual(page.complaints, []);
  await page.close();
}
