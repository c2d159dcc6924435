// A headless Chromium, spoken to through its debugging pipe.

import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const options = [
    '--headless=new',
    '--no-sandbox', // so that it runs as root too
    '--disable-gpu',
    '--disable-dev-shm-usage',
    '--mute-audio',
    '--autoplay-policy=no-user-gesture-required',
    '--disable-background-networking',
    '--disable-component-update',
    '--no-first-run',
    '--remote-debugging-pipe',
];

export class Browser {
    static async start() {
        const browser = new Browser();
        await browser.call('Browser.getVersion');
        return browser;
    }

    constructor() {
        this.profile = mkdtempSync(join(tmpdir(), 'zorvane-player-'));
        this.process = spawn('chromium', [...options, `--user-data-dir=${this.profile}`, 'about:blank'], {
            stdio: ['ignore', 'ignore', 'ignore', 'pipe', 'pipe'],
            detached: true, // a group of its own, which ends as one
        });
        this.calls = new Map();
        this.received = '';
        this.process.stdio[4].setEncoding('utf8').on('data', (text) => this.#take(text));
        this.ended = new Promise((resolve) => {
            this.process.once('error', (error) => resolve(error.message));
            this.process.once('exit', () => resolve('the browser ended before its time'));
        });
        this.ended.then((reason) => this.#failAll(reason));
    }

    /** One operation of the DevTools protocol. */
    call(method, params = {}, sessionId = undefined) {
        const id = this.calls.size + 1;
        const answer = new Promise((resolve, reject) => this.calls.set(id, { resolve, reject }));
        this.process.stdio[3].write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
        return answer;
    }

    /** Opens a page and gives the value of the expression there, when it has one. */
    async evaluateOn(url, expression) {
        const { targetId } = await this.call('Target.createTarget', { url: 'about:blank' });
        const { sessionId } = await this.call('Target.attachToTarget', { targetId, flatten: true });
        const loaded = this.#event('Page.loadEventFired');
        await this.call('Page.enable', {}, sessionId);
        await this.call('Page.navigate', { url }, sessionId);
        await loaded;
        const params = { expression, awaitPromise: true, returnByValue: true };
        const { result, exceptionDetails } = await this.call('Runtime.evaluate', params, sessionId);
        if (exceptionDetails) {
            throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
        }
        return result.value;
    }

    /** What is still asked fails with this reason. */
    async end(reason = 'the browser was ended') {
        this.#failAll(reason);
        try {
            process.kill(-this.process.pid, 'SIGKILL');
        } catch {
            // It has ended by itself.
        }
        await this.ended;
        rmSync(this.profile, { recursive: true, force: true, maxRetries: 10, retryDelay: 100 });
    }

    #event(method) {
        return new Promise((resolve, reject) => {
            this.awaited = { method, resolve };
            this.ended.then((reason) => reject(new Error(reason)));
        });
    }

    // Messages end with a zero byte.
    #take(text) {
        const messages = (this.received + text).split('\0');
        this.received = messages.pop();
        messages.forEach((message) => this.#handle(JSON.parse(message)));
    }

    #handle({ id, result, error, method }) {
        if (method && method === this.awaited?.method) {
            this.awaited.resolve();
        } else if (error) {
            this.calls.get(id)?.reject(new Error(error.message));
        } else if (id) {
            this.calls.get(id)?.resolve(result);
        }
    }

    #failAll(reason) {
        this.calls.forEach(({ reject }) => reject(new Error(reason)));
    }
}
