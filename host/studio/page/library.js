// The folder's files. Only the rows that are seen exist, so that thousands scroll as smoothly as ten.
import {background, forget, frames, listen, query, read, report, slowly} from "./api.js";
import {announce, button, clamp, el, icon, iconButton} from "./dom.js";
import * as store from "./store.js";

const CELL = 104, ROW = 112, SPARE = 3;
export const DRAGGED = "application/x-nifikral";

/** An image that loads when its turn comes; dispose() gives the turn back. */
export function thumb(path, size = 160, more = {}) {
    const image = el("img", {alt: "", draggable: "false", decoding: "async"}), gone = new AbortController();
    background.run(() => new Promise(resolve => {
        image.onload = () => { image.classList.add("painted"); resolve(); };
        image.onerror = resolve;
        image.src = "api/thumb?" + query({path, size, ...more});
    }), gone.signal).catch(() => {});
    return {image, dispose() { gone.abort(); }};
}

export class Library {
    /** take(entries) uses files; the kinds to show and the action's name are set by show(). */
    constructor() {
        this.entries = [];
        this.shown = [];
        this.chosen = new Set();
        this.active = 0;
        this.cells = new Map();
        this.crumbs = el("nav", {class: "crumbs", "aria-label": "Folder"});
        this.search = el("input", {type: "search", placeholder: "Find a file", "aria-label": "Find a file", oninput: () => this.filter()});
        this.space = el("div", {class: "space", role: "presentation"});
        this.grid = el("div", {class: "grid", role: "listbox", "aria-multiselectable": "true", "aria-label": "Files",
            onscroll: () => this.paint(), onkeydown: event => this.key(event)}, this.space);
        this.add = button("Add", () => this.use(), {class: "primary", hidden: true}, "plus");
        this.count = el("output", {class: "muted"});
        this.node = el("section", {class: "library", "aria-label": "Files"}, this.crumbs, this.search, this.grid, el("div", {class: "row end foot"}, this.count, this.add));
        new ResizeObserver(() => this.paint(true)).observe(this.grid);
        addEventListener("focus", () => this.reload());
        listen("folder", () => { forget(); this.reload(); });
    }
    show({kinds, many, take}) {
        Object.assign(this, {kinds, many, take});
        this.chosen.clear();
        this.filter();
    }
    async reload() {
        const folder = store.get().folder;
        try {
            const reply = await read("api/folder?" + query({path: folder}));
            if (folder !== store.get().folder) return;
            this.entries = reply.entries;
        } catch (error) {
            if (folder && error.status === 404) return store.show({folder: ""}), this.reload();
            return report(error);
        }
        this.crumb(folder);
        this.filter();
    }
    open(folder) { store.show({folder}); this.chosen.clear(); this.search.value = ""; this.grid.scrollTop = 0; this.active = 0; this.reload(); }
    crumb(folder) {
        const parts = folder ? folder.split("/") : [];
        this.crumbs.replaceChildren(button("Folder", () => this.open(""), {}, "folder"),
            ...parts.map((part, i) => button(part, () => this.open(parts.slice(0, i + 1).join("/")))));
    }
    filter() {
        const words = this.search.value.toLowerCase();
        this.shown = this.entries.filter(({kind, name}) => (kind === "folder" || this.kinds?.includes(kind)) && name.toLowerCase().includes(words));
        this.active = clamp(this.active, 0, Math.max(0, this.shown.length - 1));
        this.paint(true);
    }
    columns() { return Math.max(1, Math.floor((this.grid.clientWidth - 8) / CELL)); }
    paint(fresh) {
        if (!this.grid.clientWidth) return;
        const across = this.columns(), width = (this.grid.clientWidth - 8) / across;
        this.space.style.height = `${Math.ceil(this.shown.length / across) * ROW + 4}px`;
        const first = Math.max(0, Math.floor(this.grid.scrollTop / ROW) - SPARE) * across;
        const end = Math.min(this.shown.length, (Math.ceil((this.grid.scrollTop + this.grid.clientHeight) / ROW) + SPARE) * across);
        const wanted = new Map();
        for (let i = first; i < end; ++i) wanted.set(this.shown[i].path + "|" + this.shown[i].modified, i);
        if (this.shown[this.active] && document.activeElement?.parentElement === this.space) wanted.set(this.shown[this.active].path + "|" + this.shown[this.active].modified, this.active);
        for (const [key, cell] of this.cells) if (!wanted.has(key)) { cell.dispose(); cell.node.remove(); this.cells.delete(key); }
        for (const [key, index] of wanted) {
            if (!this.cells.has(key)) {
                const cell = this.cell(this.shown[index]);
                this.cells.set(key, cell);
                this.space.append(cell.node);
                cell.index = -1;
            }
            const cell = this.cells.get(key);
            if (cell.index === index && !fresh) continue;
            cell.index = index;
            Object.assign(cell.node.style, {transform: `translate(${4 + index % across * width}px, ${4 + Math.floor(index / across) * ROW}px)`, width: `${width - 6}px`});
            cell.node.tabIndex = index === this.active ? 0 : -1;
            cell.node.setAttribute("aria-posinset", index + 1);
            cell.node.setAttribute("aria-setsize", this.shown.length);
            cell.node.setAttribute("aria-selected", this.chosen.has(this.shown[index].path) || this.current === this.shown[index].path);
        }
        this.add.hidden = !this.many;
        this.add.disabled = !this.chosen.size;
        this.count.textContent = this.chosen.size ? `${this.chosen.size} chosen` : `${this.shown.length} ${this.shown.length === 1 ? "file" : "files"}`;
    }
    cell(entry) {
        const picture = ["picture", "film"].includes(entry.kind) ? thumb(entry.path, 160, {v: entry.modified}) : null;
        const node = el("div", {class: `file ${entry.kind}`, role: "option", draggable: entry.kind !== "folder", title: entry.name, "aria-label": `${entry.name}, ${entry.kind}`,
            onclick: event => this.click(entry, event), ondblclick: () => this.many && this.use([entry]),
            ondragstart: event => {
                const paths = this.chosen.has(entry.path) ? this.shown.filter(({path}) => this.chosen.has(path)) : [entry];
                event.dataTransfer.setData(DRAGGED, JSON.stringify(paths.map(({path, kind}) => ({path, kind}))));
            }},
            el("span", {class: "frame"}, picture ? picture.image : icon(entry.kind === "project" ? "disc" : entry.kind === "presets" ? "bookmark" : entry.kind), entry.kind === "film" && el("span", {class: "badge"}, icon("play"))),
            el("span", {class: "name", text: entry.name}));
        return {node, dispose: () => picture?.dispose()};
    }
    click(entry, event) {
        this.active = this.shown.indexOf(entry);
        if (entry.kind === "folder") return this.open(entry.path);
        if (!this.many || ["project", "presets"].includes(entry.kind)) { this.use([entry]); return this.paint(true); }
        if (event.shiftKey && this.anchor !== undefined) {
            const [a, b] = [Math.min(this.anchor, this.active), Math.max(this.anchor, this.active)];
            for (let i = a; i <= b; ++i) if (this.shown[i].kind !== "folder") this.chosen.add(this.shown[i].path);
        } else {
            if (!this.chosen.delete(entry.path)) this.chosen.add(entry.path);
            this.anchor = this.active;
        }
        this.paint(true);
    }
    use(entries = this.shown.filter(({path}) => this.chosen.has(path))) {
        if (!entries.length) return;
        this.take(entries);
        this.chosen.clear();
        this.paint(true);
        if (this.many) announce(`${entries.length} added`);
    }
    key(event) {
        const across = this.columns(), page = Math.max(1, Math.floor(this.grid.clientHeight / ROW)) * across;
        const step = {ArrowRight: 1, ArrowLeft: -1, ArrowDown: across, ArrowUp: -across, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity}[event.key];
        const entry = this.shown[this.active];
        if (step) {
            this.active = clamp(this.active + step, 0, this.shown.length - 1);
            const top = Math.floor(this.active / across) * ROW;
            this.grid.scrollTop = clamp(this.grid.scrollTop, top + ROW - this.grid.clientHeight, top);
            this.paint(true);
            [...this.cells.values()].find(cell => cell.index === this.active)?.node.focus();
        } else if (event.key === " " && entry) this.click(entry, event);
        else if (event.key === "Enter" && entry) entry.kind === "folder" ? this.open(entry.path) : this.use(this.chosen.size ? undefined : [entry]);
        else if (event.key === "Backspace" && store.get().folder) this.open(store.get().folder.split("/").slice(0, -1).join("/"));
        else return;
        event.preventDefault();
        event.stopPropagation();
    }
    mark(path) { if (this.current !== path) { this.current = path; this.paint(true); } }
}

/** The paths of the folder that is open, of some kinds. */
export const filesOfKinds = async kinds => (await read("api/folder?" + query({path: store.get().folder}))).entries.filter(({kind}) => kinds.includes(kind)).map(({path}) => path);

/** Lets a list take files that are dragged from the library. */
export function takesFiles(node, take) {
    node.addEventListener("dragover", event => { if (event.dataTransfer.types.includes(DRAGGED)) { event.preventDefault(); node.classList.add("takes"); } });
    node.addEventListener("dragleave", () => node.classList.remove("takes"));
    node.addEventListener("drop", event => {
        node.classList.remove("takes");
        const data = event.dataTransfer.getData(DRAGGED);
        if (!data) return;
        event.preventDefault();
        take(JSON.parse(data));
    });
}

/** Calls node.seen(now) whenever a node comes into sight, or leaves it. */
const seen = new IntersectionObserver(list => { for (const {target, isIntersecting} of list) target.seen?.(isIntersecting); }, {rootMargin: "120px"});

/** A tile of a picture and a line below it, which is drawn when it is first seen. */
export function tile(label, about, onclick) {
    const canvas = el("canvas", {width: 160, height: 90, "aria-hidden": "true"});
    const node = el("button", {type: "button", class: "tile", title: about, tabindex: -1, onclick}, canvas, el("span", {class: "name", text: label}));
    let draw = null;
    node.seen = now => { if (!now || !draw) return; const work = draw; draw = null; work(); };
    seen.observe(node);
    return {node, canvas, /** Draws anew as soon as the tile is seen. */ refresh(work) { draw = work; seen.unobserve(node); seen.observe(node); }};
}

// Small films move while they are seen: all at one pace, every second frame of what the server streams.
const FILM_MS = 80, EVERY = 2;
const moving = new Set(), switches = [], less = matchMedia("(prefers-reduced-motion: reduce)");
const atRest = () => Boolean(localStorage.filmsRest ?? less.matches);
setInterval(() => { if (!document.hidden && !atRest()) for (const step of moving) step(); }, FILM_MS);

/** A switch that lets all small films rest, as they do from the beginning where the system asks for less motion. */
export function restButton() {
    const node = iconButton("pause", "Let the small films rest", () => { localStorage.filmsRest = atRest() ? "" : "yes"; for (const mark of switches) mark(); });
    const mark = () => node.setAttribute("aria-pressed", atRest());
    switches.push(mark);
    mark();
    return node;
}

/** A tile that plays a small film of its own: show(film) sets what, an async function that gives [path, body] of a stream. */
export function filmTile(label, about, onclick) {
    const one = tile(label, about, onclick), jpegs = [];
    let film = null, loading = null, at = 0, decoding = false;
    async function draw(jpeg) {
        if (decoding) return;
        decoding = true;
        const picture = await createImageBitmap(jpeg).finally(() => { decoding = false; });
        if (one.canvas.width !== picture.width) Object.assign(one.canvas, {width: picture.width, height: picture.height});
        one.canvas.getContext("2d").drawImage(picture, 0, 0);
        one.canvas.classList.add("painted");
        picture.close();
    }
    const step = () => { if (jpegs.length > 1) draw(jpegs[at++ % jpegs.length]); };
    async function load() {
        const own = loading = new AbortController();
        try {
            await slowly.run(async () => {
                jpegs.length = 0;
                const [path, body] = await film(own.signal);
                let count = 0;
                for await (const {jpeg} of frames(path, body, own.signal)) {
                    if (own.signal.aborted) return;
                    if (count++ % EVERY === 0) { jpegs.push(jpeg); draw(jpeg); }
                }
                film = null;
            }, own.signal);
            if (one.node.inSight) moving.add(step);
        } catch (error) { if (!own.signal.aborted) { film = null; report(error); } }
        if (loading === own) loading = null;
    }
    one.node.seen = now => {
        one.node.inSight = now;
        moving.delete(step);
        if (!now) { loading?.abort(); loading = null; }
        else if (film) { if (!loading) load(); }
        else moving.add(step);
    };
    return {...one, show(next) { film = next; loading?.abort(); loading = null; at = 0; moving.delete(step); if (one.node.inSight) load(); }};
}

/** A small picture of a file for a line of a list, loaded when it is first seen; a folder has none. */
export function thumbBox(path) {
    const box = el("span", {class: "thumb"});
    if (!/\.\w+$/.test(path)) { box.append(icon("folder")); return box; }
    box.seen = now => { if (!now) return; box.seen = null; seen.unobserve(box); const one = thumb(path, 160); box.dispose = one.dispose; box.append(one.image); };
    seen.observe(box);
    return box;
}
