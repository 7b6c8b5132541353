// Looks at the built site in a browser, at every page that its links lead to.
//
//     node check_site.mjs SITE
//
// On a desktop in light colours and on a telephone in dark ones: nothing on the console, nothing
// fetched from elsewhere, every link and picture leads somewhere, text can be read, nothing scrolls
// sideways. The search box finds what people will look for.
import { launch } from './browser.mjs';
import { brokenPictures, faintText, sidewaysScrolling } from './page_checks.mjs';
import { serve } from './serve.mjs';

const kKinds = [
  { name: 'desktop, light', colorScheme: 'light', viewport: { width: 1280, height: 900 }, scheme: 'default' },
  { name: 'telephone, dark', colorScheme: 'dark', viewport: { width: 360, height: 740 }, scheme: 'slate' },
];

const faults = [];
const server = await serve(process.argv[2]);
const browser = await launch();

// A window whose troubles are noted. Patience is for machines that have other things to do.
async function open(kind) {
  const context = await browser.newContext(kind);
  context.setDefaultTimeout(120000);
  context.on('console', (message) => {
    if (['error', 'warning'].includes(message.type())) faults.push(`${kind.name}: console: ${message.text()}`);
  });
  context.on('weberror', (error) => faults.push(`${kind.name}: ${error.error()}`));
  context.on('request', (request) => {
    if (!/^(data|blob):/.test(request.url()) && !request.url().startsWith(server.origin))
      faults.push(`${kind.name}: asks for ${request.url()}`);
  });
  context.on('response', (response) => {
    if (response.status() >= 400) faults.push(`${kind.name}: ${response.status()} for ${response.url()}`);
  });
  return context;
}

// Every page from the start page on, and whether each link's place in its page exists.
async function crawl(kind) {
  const context = await open(kind);
  const tab = await context.newPage();
  const anchors = new Map();
  const links = [];
  const todo = [`${server.origin}/index.html`];
  for (const url of todo) {
    const answer = await tab.goto(url, { waitUntil: 'load' });
    if (!answer.ok()) continue; // noted already, and so are the links to it below
    const page = url.slice(server.origin.length);
    const scheme = await tab.evaluate(() => document.body.dataset.mdColorScheme);
    if (scheme !== kind.scheme) faults.push(`${kind.name}: ${page} is in the colours ${scheme}`);
    for (const check of [brokenPictures, sidewaysScrolling, faintText])
      for (const fault of await check(tab)) faults.push(`${kind.name}: ${page}: ${fault}`);
    anchors.set(page, new Set(await tab.evaluate(() => [...document.querySelectorAll('[id]')].map((at) => at.id))));
    for (const href of await tab.evaluate(() => [...document.links].map((link) => link.href))) {
      const target = new URL(href);
      links.push({ from: page, target });
      const isPage = target.origin === server.origin && target.pathname.endsWith('.html');
      if (isPage && !todo.includes(server.origin + target.pathname)) todo.push(server.origin + target.pathname);
    }
  }
  const files = new Map();
  for (const { from, target } of links) {
    if (target.origin !== server.origin) {
      faults.push(`${from} links to ${target}`);
    } else if (anchors.has(target.pathname)) {
      const anchor = decodeURIComponent(target.hash.slice(1));
      if (anchor && !anchors.get(target.pathname).has(anchor)) faults.push(`${from} links to ${target}: no such place`);
    } else {
      if (!files.has(target.pathname)) files.set(target.pathname, (await context.request.get(target.href)).ok());
      if (!files.get(target.pathname)) faults.push(`${from} links to ${target}: not there`);
    }
  }
  await context.close();
  return { pages: anchors.size, links: links.length };
}

// Types a word into the search box and follows the first result.
async function search(kind, word, page) {
  const context = await open(kind);
  const tab = await context.newPage();
  await tab.goto(`${server.origin}/index.html`);
  if (kind.viewport.width < 960) await tab.click('label.md-header__button[for="__search"]');
  // Keys that are pressed before the index is there are lost. The page says when it is.
  await tab.locator('.md-search__input').focus();
  const ready = tab.locator('.md-search-result__meta').filter({ hasNotText: 'Initializing' });
  await ready.waitFor({ state: 'attached', timeout: 120000 });
  await tab.locator('.md-search__input').pressSequentially(word); // key by key, as it listens to them
  const first = tab.locator('.md-search-result__link').first();
  await first.waitFor({ timeout: 60000 }).catch(() => faults.push(`${kind.name}: the search box finds no ${word}`));
  const found = (await first.count()) ? await first.getAttribute('href') : '';
  if (!found.includes(page)) faults.push(`${kind.name}: ${word} leads to “${found}”, not to ${page}`);
  await context.close();
}

// The button in the header changes the colours.
async function toggle() {
  const context = await open(kKinds[0]);
  const tab = await context.newPage();
  await tab.goto(`${server.origin}/reference/invert.html`);
  await tab.click('label.md-header__button[for="__palette_2"]');
  const scheme = await tab.evaluate(() => document.body.dataset.mdColorScheme);
  await tab.evaluate(() => Promise.all(document.getAnimations().map((animation) => animation.finished)));
  if (scheme !== 'slate') faults.push(`the button for dark colours gives ${scheme}`);
  for (const fault of await faintText(tab)) faults.push(`after the button for dark colours: ${fault}`);
  await context.close();
}

for (const kind of kKinds) {
  const { pages, links } = await crawl(kind);
  console.log(`${kind.name}: ${pages} pages, ${links} links`);
  if (pages < 15) faults.push(`only ${pages} pages are linked`);
  await search(kind, 'saturation', 'reference/colour-changes.html');
}
await search(kKinds[0], 'waveform', 'reference/waveforms.html');
await toggle();

await browser.close();
server.close();
for (const fault of faults) console.error(fault);
console.log(`${faults.length} faults`);
process.exit(faults.length ? 1 : 0);
