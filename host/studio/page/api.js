// The server, spoken to: plain calls, views of which the newest request wins, streams of frames, and events.
import {notice} from "./dom.js";

/** This page among others: its name survives a reload. A copy of the page, which the browser gives the same name, takes another one. */
async function ownName() {
    const taken = name => new Promise(resolve => navigator.locks.request(`page ${name}`, {ifAvailable: true}, lock => {
        resolve(!lock);
        return lock && new Promise(() => {});
    }));
    let name = sessionStorage.page;
    while (!name || await taken(name)) name = Array.from(crypto.getRandomValues(new Uint8Array(8)), value => (value % 36).toString(36)).join("");
    return sessionStorage.page = name;
}
export const page = await ownName();

export class Fault extends Error {
    constructor(message, status, superseded) { super(message); this.status = status; this.superseded = superseded; }
}

export async function call(method, path, body, options = {}) {
    const {headers, ...rest} = options;
    const text = body === undefined ? undefined : typeof body === "string" ? body : JSON.stringify(body);
    let reply;
    try {
        reply = await fetch(path, {method, body: text, headers: {...(text === undefined ? {} : {"Content-Type": "application/json"}), ...headers}, ...rest,
            keepalive: rest.keepalive && text.length < 60000});
    } catch (error) {
        if (error.name === "AbortError") throw error;
        throw new Fault("The studio has ended; start `nifikral studio` again and open its new address: what was edited until then is there.", 0);
    }
    if (reply.ok) return reply;
    const fault = await reply.json().catch(() => ({}));
    throw new Fault(fault.error ?? `${path.split("?")[0]}: ${reply.status} ${reply.statusText}`, reply.status, fault.superseded);
}
export const read = async (path, options) => (await call("GET", path, undefined, options)).json();
export const post = async (path, body, options) => (await call("POST", path, body, options)).json();
export const query = values => new URLSearchParams(values).toString();

/** Shows a fault, unless it only says that something newer took its place. */
export function report(error) {
    if (error?.name === "AbortError" || error?.superseded) return;
    notice(error.message, true);
}

/** Work of which only the newest matters: one runs, one waits. */
export class Latest {
    constructor(work) { this.work = work; }
    ask(value) {
        this.next = {value};
        if (!this.running) this.run();
    }
    cancel() { this.next = null; this.abort?.abort(); }
    async run() {
        this.running = true;
        while (this.next) {
            const {value} = this.next;
            this.next = null;
            this.abort = new AbortController();
            try { await this.work(value, this.abort.signal); }
            catch (error) { if (!this.next) report(error); }
        }
        this.running = false;
    }
}

/**
 * Runs a few at a time, so that thumbnails never hold up the picture that is worked on: what was asked for last comes first,
 * what was asked for together in its order.
 */
class Background {
    constructor(most) { this.free = most; this.waiting = []; }
    run(work, signal) {
        return new Promise((resolve, reject) => {
            this.waiting.push({work, resolve, reject, signal, moment: Math.floor(performance.now() / 200)});
            this.next();
        });
    }
    async next() {
        if (!this.free || !this.waiting.length) return;
        const {moment} = this.waiting[this.waiting.length - 1];
        const [{work, resolve, reject, signal}] = this.waiting.splice(this.waiting.findIndex(one => one.moment === moment), 1);
        if (signal?.aborted) { reject(new DOMException("", "AbortError")); return this.next(); }
        --this.free;
        try { resolve(await work()); } catch (error) { reject(error); }
        ++this.free;
        this.next();
    }
}
export const background = new Background(2);
/** Small films take long, and do not hold up thumbnails either. */
export const slowly = new Background(1);

/** A picture as a bitmap, from any of the calls that return one. */
export async function bitmap(path, body, signal) {
    const reply = await call("POST", path, body, {signal});
    return createImageBitmap(await reply.blob());
}

/** Draws a picture of the server into a canvas, when its turn comes. */
export async function paint(canvas, path, body, signal) {
    const picture = await background.run(() => bitmap(path, body, signal), signal);
    canvas.width = picture.width;
    canvas.height = picture.height;
    canvas.getContext("2d").drawImage(picture, 0, 0);
    picture.close();
    canvas.classList.add("painted");
}

/** The frames of a stream, each a JPEG; reading slower makes the server wait. */
export async function* frames(path, body, signal) {
    const reply = await call("POST", path, body, {signal});
    const rate = reply.headers.get("X-Rate")?.split("/").map(Number);
    const reader = reply.body.getReader();
    let held = new Uint8Array(0);
    async function take(count) {
        const parts = [held];
        let length = held.length;
        while (length < count) {
            const {value, done} = await reader.read();
            if (done) return null;
            parts.push(value);
            length += value.length;
        }
        const all = new Uint8Array(length);
        parts.reduce((at, part) => (all.set(part, at), at + part.length), 0);
        held = all.subarray(count);
        return all.subarray(0, count);
    }
    try {
        for (;;) {
            const head = await take(4);
            if (!head) return;
            const size = new DataView(head.buffer, head.byteOffset).getUint32(0);
            const data = await take(size);
            if (!data) return;
            yield {jpeg: new Blob([data], {type: "image/jpeg"}), rate};
        }
    } finally { reader.cancel().catch(() => {}); }
}

/** Plays a stream at its pace: draw(bitmap, index) takes each frame and closes it. A few frames are read ahead. */
export async function play(path, body, rate, draw, signal) {
    const source = frames(path, body, signal), ahead = [];
    const decoded = async ({value, done}) => done ? {done} : {value: {...value, picture: await createImageBitmap(value.jpeg)}};
    const more = () => { ahead.push(source.next().then(decoded).catch(error => ({done: true, error}))); };
    for (let i = 0; i < 4; ++i) more();
    let begin = 0;
    for (let index = 0; ; ++index) {
        const {value, done, error} = await ahead.shift();
        if (error) throw error;
        if (done || signal.aborted) { source.return?.().catch(() => {}); return; }
        more();
        const pace = value.rate ? value.rate[0] / value.rate[1] : rate;
        const due = begin + index * 1000 / pace, now = performance.now();
        if (index === 0) begin = now;
        else if (due > now) await new Promise(resolve => setTimeout(resolve, due - now));
        else if (now - due > 500) begin += now - due;
        draw(value.picture, index);
    }
}

/** Events of the server: listen("jobs", handler). The browser connects again by itself. */
let source = null;
export function listen(name, handler) {
    source ??= new EventSource("api/events");
    source.addEventListener(name, event => handler(event.data ? JSON.parse(event.data) : null));
}

const known = new Map();
/** The facts of a file, asked once until the folder changes. */
export const facts = path => {
    if (!known.has(path)) known.set(path, read("api/facts?" + query({path})).catch(error => { known.delete(path); throw error; }));
    return known.get(path);
};
export const forget = () => known.clear();

const etags = new Map();
/** A JSON file of the folder, in which comments are allowed; or any file as its text. */
export async function load(path, plainText = false) {
    const reply = await call("GET", "api/file?" + query({path}));
    etags.set(path, reply.headers.get("ETag"));
    const text = await reply.text();
    if (plainText) return text;
    const plain = text.replace(/("(?:\\.|[^"\\])*")|\/\/[^\n]*|\/\*[\s\S]*?\*\/|,(?=\s*[\]}])/g, (all, string) => string ?? "");
    return JSON.parse(plain);
}
/** Writes a file as a whole. One that is there already, or that another program changed meanwhile, is kept: the fault's status is 412. */
export async function store(path, text) {
    const tag = etags.get(path), headers = tag ? {"If-Match": tag} : {"If-None-Match": "*"};
    etags.set(path, (await (await call("PUT", "api/file?" + query({path}), {text}, {headers})).json()).etag);
}
