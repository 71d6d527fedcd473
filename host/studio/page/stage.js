// The picture in the middle: fits or zooms to single pixels, compares by a split line, and carries handles and other marks.
import {clamp, draggable, el, iconButton, svg} from "./dom.js";

const ZOOMS = [0.25, 0.5, 1, 2, 4, 8, 16, 32];

export class Stage {
    /** wanted() is called when another size or part of the picture is to be seen. */
    constructor(label, wanted) {
        this.wanted = wanted;
        this.source = {width: 16, height: 9};
        this.zoom = 0;
        this.centre = [0.5, 0.5];
        this.split = null;
        this.layers = {};
        this.marks = [];
        this.canvas = el("canvas", {role: "img", "aria-label": label});
        this.overlay = svg("svg", {class: "overlay"});
        this.divider = el("div", {class: "split", role: "slider", tabindex: 0, hidden: true, "aria-label": "Line between original and result",
            "aria-valuemin": 0, "aria-valuemax": 100, onkeydown: event => {
                const step = {ArrowLeft: -0.02, ArrowRight: 0.02, Home: -1, End: 1}[event.key];
                if (step) { event.preventDefault(); this.setSplit(clamp(this.split + step, 0, 1)); }
            }});
        draggable(this.divider, () => ({move: event => this.setSplit(clamp(this.share(event)[0], 0, 1))}));
        this.percent = el("output", {class: "percent"});
        this.empty = el("p", {class: "hint"});
        this.tools = el("div", {class: "tools"}, iconButton("fit", "Fit (0)", () => this.setZoom(0)), this.percent,
            el("button", {type: "button", class: "icon-button", "aria-label": "1:1, single pixels", title: "1:1, single pixels (1)", onclick: () => this.setZoom(1), text: "1:1"}),
            iconButton("minus", "Zoom out (-)", () => this.step(-1)), iconButton("plus", "Zoom in (+)", () => this.step(1)));
        this.node = el("div", {class: "stage", tabindex: 0, role: "group", "aria-label": "Picture: + and - zoom, 0 fits, arrow keys move"},
            this.canvas, this.divider, this.overlay, this.tools, this.empty);
        this.node.addEventListener("keydown", event => this.key(event));
        this.node.addEventListener("wheel", event => { event.preventDefault(); this.step(event.deltaY < 0 ? 1 : -1, this.share(event)); }, {passive: false});
        this.pan();
        new ResizeObserver(() => this.layout(true)).observe(this.node);
    }
    setSource(width, height) {
        if (width === this.source.width && height === this.source.height) return;
        this.source = {width, height};
        this.zoom = 0;
        this.layers = {};
        this.layout(true);
    }
    setEmpty(text) { this.empty.textContent = text ?? ""; this.node.classList.toggle("nothing", Boolean(text)); if (text) { this.layers = {}; this.draw(); } }
    fitScale() {
        const dpr = devicePixelRatio, pad = 16;
        return Math.max(0.001, Math.min((this.node.clientWidth - pad) * dpr / this.source.width, (this.node.clientHeight - pad) * dpr / this.source.height));
    }
    /** Device pixels a pixel of the source. */
    scale() { return this.zoom ? this.zoom : Math.min(this.fitScale(), 8); }
    /** Where the whole picture lies, in pixels of the page. */
    box() {
        const dpr = devicePixelRatio, scale = this.scale() / dpr, {width, height} = this.source;
        const w = width * scale, h = height * scale;
        const place = (room, size, centre) => size <= room ? (room - size) / 2 : clamp(room / 2 - centre * size, room - size, 0);
        return {x: place(this.node.clientWidth, w, this.centre[0]), y: place(this.node.clientHeight, h, this.centre[1]), w, h};
    }
    share(event) {
        const bounds = this.node.getBoundingClientRect(), box = this.box();
        return [(event.clientX - bounds.x - box.x) / box.w, (event.clientY - bounds.y - box.y) / box.h];
    }
    /** What a request has to ask for: a width, and a part of the source when zoomed in. */
    need() {
        const {width, height} = this.source, box = this.box();
        if (box.w <= this.node.clientWidth + 1 && box.h <= this.node.clientHeight + 1)
            return {width: Math.max(16, Math.min(width, Math.ceil(box.w * devicePixelRatio / 2) * 2))};
        if (this.scale() < 1) return {width: Math.max(16, Math.min(4096, Math.ceil(width * this.scale())))};
        const part = (from, room, size, whole) => {
            const begin = Math.floor(clamp(-from / size, 0, 1) * whole), end = Math.ceil(clamp((room - from) / size, 0, 1) * whole);
            return [begin, Math.max(1, end - begin)];
        };
        const [x, w] = part(box.x, this.node.clientWidth, box.w, width), [y, h] = part(box.y, this.node.clientHeight, box.h, height);
        return {crop: [x, y, w, h]};
    }
    /** Shows a picture as the result, or as the original left of the line. */
    show(picture, crop, layer = "result") {
        const layers = this.layers[layer] ??= {};
        layers[crop ? "part" : "whole"]?.picture.close();
        layers[crop ? "part" : "whole"] = {picture, crop};
        if (!crop) delete layers.part;
        this.draw();
    }
    draw() {
        const dpr = devicePixelRatio, width = Math.round(this.node.clientWidth * dpr), height = Math.round(this.node.clientHeight * dpr);
        if (this.canvas.width !== width || this.canvas.height !== height) Object.assign(this.canvas, {width, height});
        const context = this.canvas.getContext("2d"), box = this.box();
        const at = crop => {
            const sx = box.w * dpr / this.source.width, sy = box.h * dpr / this.source.height;
            return crop ? [box.x * dpr + crop[0] * sx, box.y * dpr + crop[1] * sy, crop[2] * sx, crop[3] * sy] : [box.x * dpr, box.y * dpr, box.w * dpr, box.h * dpr];
        };
        context.clearRect(0, 0, width, height);
        context.imageSmoothingEnabled = this.scale() < 2;
        context.imageSmoothingQuality = "high";
        const paint = layer => { for (const kind of ["whole", "part"]) if (layer?.[kind]) context.drawImage(layer[kind].picture, ...at(layer[kind].crop).map(Math.round)); };
        paint(this.layers.result);
        if (this.split !== null && this.layers.original) {
            context.save();
            context.beginPath();
            context.rect(0, 0, (box.x + this.split * box.w) * dpr, height);
            context.clip();
            paint(this.layers.original);
            context.restore();
        }
    }
    layout(ask) {
        if (!this.node.clientWidth) return;
        const box = this.box();
        this.overlay.setAttribute("viewBox", `0 0 ${this.node.clientWidth} ${this.node.clientHeight}`);
        this.divider.hidden = this.split === null;
        this.divider.style.left = `${box.x + (this.split ?? 0) * box.w}px`;
        this.divider.style.top = `${Math.max(0, box.y)}px`;
        this.divider.style.height = `${Math.min(this.node.clientHeight, box.h)}px`;
        this.divider.setAttribute("aria-valuenow", Math.round((this.split ?? 0) * 100));
        this.percent.textContent = `${Math.round(this.scale() * 100)} %`;
        this.draw();
        for (const mark of this.marks) mark();
        if (ask) this.wanted?.();
    }
    setSplit(split) { this.split = split; this.layout(false); }
    setZoom(zoom, at) {
        const before = this.box();
        this.zoom = zoom;
        if (at) {
            // What is under the pointer stays there.
            const screen = [before.x + at[0] * before.w, before.y + at[1] * before.h], after = this.box();
            this.centre = [at[0] + (this.node.clientWidth / 2 - screen[0]) / after.w, at[1] + (this.node.clientHeight / 2 - screen[1]) / after.h];
        }
        this.layout(true);
    }
    step(by, at) {
        const now = this.scale(), fit = this.fitScale();
        const next = by > 0 ? ZOOMS.find(zoom => zoom > now * 1.01 && zoom > fit) : [...ZOOMS].reverse().find(zoom => zoom < now * 0.99 && zoom > fit);
        this.setZoom(by > 0 ? next ?? now : next ?? 0, at);
    }
    key(event) {
        if (event.target !== this.node || event.ctrlKey || event.metaKey) return;
        const pan = {ArrowLeft: [-0.1, 0], ArrowRight: [0.1, 0], ArrowUp: [0, -0.1], ArrowDown: [0, 0.1]}[event.key];
        if (event.key === "+" || event.key === "=") this.step(1);
        else if (event.key === "-") this.step(-1);
        else if (event.key === "0") this.setZoom(0);
        else if (event.key === "1") this.setZoom(1);
        else if (pan && this.zoom) this.moveBy(pan[0], pan[1]);
        else return;
        event.preventDefault();
        event.stopPropagation();
    }
    moveBy(x, y) {
        const box = this.box(), part = [this.node.clientWidth / box.w, this.node.clientHeight / box.h];
        this.centre = [x * part[0], y * part[1]].map((by, i) => clamp(this.centre[i] + by, Math.min(0.5, part[i] / 2), Math.max(0.5, 1 - part[i] / 2)));
        this.layout(true);
    }
    /** One finger or the mouse moves a zoomed picture, two fingers zoom. */
    pan() {
        const fingers = new Map();
        const spread = () => { const [a, b] = [...fingers.values()]; return Math.hypot(a.clientX - b.clientX, a.clientY - b.clientY); };
        let pinch = 0;
        this.node.addEventListener("pointerdown", event => {
            if (event.target !== this.canvas) return;
            fingers.set(event.pointerId, event);
            this.node.setPointerCapture(event.pointerId);
            pinch = fingers.size === 2 ? spread() : 0;
        });
        this.node.addEventListener("pointermove", event => {
            const was = fingers.get(event.pointerId);
            if (!was) return;
            fingers.set(event.pointerId, event);
            if (pinch && Math.abs(Math.log2(spread() / pinch)) > 0.5) {
                this.step(spread() > pinch ? 1 : -1, this.share(event));
                pinch = spread();
            } else if (!pinch && this.zoom)
                this.moveBy((was.clientX - event.clientX) / this.node.clientWidth, (was.clientY - event.clientY) / this.node.clientHeight);
        });
        for (const name of ["pointerup", "pointercancel"]) this.node.addEventListener(name, event => { fingers.delete(event.pointerId); pinch = 0; });
    }
}
