// A small file server for one folder, on a port of its own.
import { createServer } from 'node:http';
import { readFile } from 'node:fs/promises';
import { extname, join, normalize } from 'node:path';

const kTypes = {
  '.html': 'text/html; charset=utf-8', '.css': 'text/css', '.js': 'text/javascript', '.json': 'application/json',
  '.png': 'image/png', '.jpg': 'image/jpeg', '.svg': 'image/svg+xml', '.xml': 'application/xml', '.map': 'application/json',
};

export async function serve(folder) {
  const server = createServer(async (request, response) => {
    let path = normalize(decodeURIComponent(new URL(request.url, 'http://localhost').pathname));
    if (path.endsWith('/')) path += 'index.html';
    try {
      const bytes = await readFile(join(folder, path));
      response.writeHead(200, { 'content-type': kTypes[extname(path)] ?? 'application/octet-stream' });
      response.end(bytes);
    } catch {
      response.writeHead(404).end('not there');
    }
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  return { origin: `http://127.0.0.1:${server.address().port}`, close: () => server.close() };
}
