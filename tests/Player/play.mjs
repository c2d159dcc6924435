// Plays a segmented recording in a headless browser and says what became of it.
//
//     node play.mjs MASTER_PLAYLIST
//
// Prints what the player saw as JSON. Exit status 0: it was played from its begin to its end, pictures and sound, and
// the player complained of nothing; 1: what was wrong is printed.

import { createReadStream, statSync } from 'node:fs';
import { createServer } from 'node:http';
import { basename, dirname, extname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { Browser } from './browser.mjs';
import { faultsOf } from './faults.mjs';

const longestRun = 40_000; // milliseconds
const here = dirname(fileURLToPath(import.meta.url));
const types = {
    '.html': 'text/html',
    '.js': 'text/javascript',
    '.m3u8': 'application/vnd.apple.mpegurl',
    '.m4s': 'video/iso.segment',
    '.mp4': 'video/mp4',
};

function fileFor(path, recording) {
    switch (path) {
        case '/':
            return join(here, 'player.html');
        case '/hls.js':
            return join(here, 'node_modules/hls.js/dist/hls.js');
        default:
            return join(recording, basename(decodeURIComponent(path)));
    }
}

function serve(recording) {
    const server = createServer((request, response) => {
        const file = fileFor(new URL(request.url, 'http://localhost').pathname, recording);
        try {
            const { size } = statSync(file);
            response.writeHead(200, { 'content-type': types[extname(file)] ?? 'text/html', 'content-length': size });
            createReadStream(file).pipe(response);
        } catch {
            response.writeHead(404).end();
        }
    });
    return new Promise((resolve) => server.listen(0, '127.0.0.1', () => resolve(server)));
}

async function main(masterPlaylist) {
    const server = await serve(dirname(masterPlaylist));
    const browser = await Browser.start();
    const timer = setTimeout(() => browser.end(`it was not played within ${longestRun / 1000} s`), longestRun);
    try {
        const page = `http://127.0.0.1:${server.address().port}/?${encodeURIComponent(basename(masterPlaylist))}`;
        const seen = await browser.evaluateOn(page, 'played');
        console.log(JSON.stringify(seen, null, 2));
        const faults = faultsOf(seen);
        faults.forEach((fault) => console.log(`fault: ${fault}`));
        return faults.length === 0 ? 0 : 1;
    } finally {
        clearTimeout(timer);
        await browser.end();
        server.close();
        server.closeAllConnections();
    }
}

process.exitCode = await main(process.argv[2]).catch((error) => {
    console.log(`fault: ${error.message}`);
    return 1;
});
