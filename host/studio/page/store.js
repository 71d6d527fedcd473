// What is being edited: one immutable state. Every job (picture, film, ...) keeps its own past and future; a change of
// the same thing within a moment, such as a slider that is dragged, is one step.
import {call, page} from "./api.js";

const MERGE_MS = 700, SAVE_MS = 300, STEPS = 200;
const listeners = new Set();
const past = {}, future = {};
let last = {at: 0, job: "", label: ""}, timer = 0, saving = null;

export const empty = {
    job: "picture", folder: "", panel: "files",
    picture: {path: "", chain: []}, film: {path: "", chain: [], in: null, out: null},
    menu: {template: "", project: null, path: "menu.json"},
    slideshow: {inputs: [], seconds: 4, transitionSeconds: 1, transitions: ["crossfade"], motions: ["none"], motionAmount: 15, fit: "blur",
        size: "1920x1080", rate: 25, audio: [], length: null, seed: 0},
    disc: {project: null, path: "disc.json"},
};
let state = empty;

export const get = () => state;
export const subscribe = listener => { listeners.add(listener); return () => listeners.delete(listener); };

function become(next) {
    state = next;
    for (const listener of listeners) listener(state);
    clearTimeout(timer);
    timer = setTimeout(save, SAVE_MS);
}

/** Changes where one is: the job, the folder, the panel. Undo passes it by. */
export const show = part => become({...state, ...part});

/** Changes what a job makes, by what its parts are to be, or a function of what it is. */
export function change(job, part, label = "") {
    const now = performance.now(), was = state[job];
    const next = {...was, ...(typeof part === "function" ? part(was) : part)};
    const same = label && last.job === job && last.label === label && now - last.at < MERGE_MS;
    if (!same) past[job] = [...(past[job] ?? []), was].slice(-STEPS);
    future[job] = [];
    last = {at: now, job, label};
    become({...state, [job]: next});
}

function step(from, to) {
    const job = state.job, list = from[job] ?? [];
    if (!list.length) return false;
    to[job] = [...(to[job] ?? []), state[job]];
    from[job] = list.slice(0, -1);
    last = {at: 0};
    become({...state, [job]: list[list.length - 1]});
    return true;
}
export const undo = () => step(past, future);
export const redo = () => step(future, past);
export const canUndo = () => (past[state.job] ?? []).length > 0;
export const canRedo = () => (future[state.job] ?? []).length > 0;

/** What is dragged, or pressed, is a step of its own. */
for (const name of ["pointerdown", "pointerup"]) addEventListener(name, () => { last = {at: 0}; }, true);

/** A page keeps what is its own over a reload, whatever other pages write. */
function remember() { if (state !== empty) try { sessionStorage.draft = JSON.stringify(state); } catch { /* more than the browser keeps: the server has it */ } }

/** Writes the draft; what changes meanwhile is written next. */
async function save() {
    if (saving) { await saving; return save(); }
    remember();
    saving = call("PUT", `api/draft?page=${page}`, state, {keepalive: true}).catch(() => { timer = setTimeout(save, 3000); });
    await saving;
    saving = null;
}
/** What is not written yet is written before the page goes. */
addEventListener("pagehide", () => { clearTimeout(timer); remember(); if (state !== empty) save(); });

export async function restore() {
    try {
        const reply = await call("GET", `api/draft?page=${page}`);
        const draft = sessionStorage.draft ? JSON.parse(sessionStorage.draft) : await reply.json();
        if (draft?.job) state = {...empty, ...draft};
    } catch { /* a page without a draft begins empty */ }
}
