// Debian's Chromium, without a window, with a new profile that goes when it closes.
import { chromium } from 'playwright-core';

export function launch() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    headless: false, // playwright's own flag for it is one that this Chromium no longer has
    args: [
      '--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync',
    ],
  });
}
