// A scrubber with play, single frames, in and out.
import {play, report} from "./api.js";
import {clamp, clock, draggable, el, iconButton, round} from "./dom.js";

export class Timeline {
    /** seek(seconds) shows a frame; stream(from) returns [path, body] of what plays from there; draw(bitmap) shows it. */
    constructor({seek, stream, draw, inOut, label}) {
        Object.assign(this, {seek, stream, draw, at: 0, seconds: 0, rate: 25, loop: null});
        this.bar = el("input", {type: "range", class: "scrubber", min: 0, value: 0, "aria-label": label ?? "Time", oninput: () => { this.stop(); this.set(Number(this.bar.value) / this.rate); }});
        this.toggle = iconButton("play", "Play (space)", () => this.playing ? this.stop() : this.start());
        this.readout = el("output", {class: "time"});
        this.marks = el("div", {class: "marks"});
        this.speed = el("output", {class: "muted speed"});
        const end = (which, label, about) => el("button", {type: "button", class: "quiet", title: about, onclick: () => inOut(which), text: label});
        this.ends = inOut ? {in: end("in", "In", "Begin here (I); again: at the film's begin"), out: end("out", "Out", "End here (O); again: at the film's end")} : {};
        this.node = el("div", {class: "timeline", role: "group", "aria-label": "Time"}, this.toggle,
            iconButton("left", "One frame back", () => this.set(this.at - 1 / this.rate)), iconButton("right", "One frame on", () => this.set(this.at + 1 / this.rate)),
            el("div", {class: "track"}, this.marks, this.bar), this.readout, this.speed,
            ...Object.values(this.ends));
        this.inOut = inOut;
    }
    setLength(seconds, rate) {
        Object.assign(this, {seconds, rate});
        this.bar.max = Math.max(0, Math.round(seconds * rate) - 1);
        this.set(clamp(this.at, 0, seconds), false);
    }
    /**
     * Parts of the time that are marked: [{begin, end, kind}]. One with move(at) has a label, and is dragged, or moved by arrow
     * keys, to another time; remove() takes it away.
     */
    setMarks(list) {
        const had = [...this.marks.children].indexOf(document.activeElement);
        this.marks.replaceChildren(...list.map(({begin, end, kind, label, move, remove}) => {
            const mark = el("span", {class: kind});
            mark.style.left = `${begin / this.seconds * 100}%`;
            mark.style.width = `${(end - begin) / this.seconds * 100}%`;
            if (move) this.makeMovable(mark, begin, label, move, remove);
            return mark;
        }));
        if (had >= 0) this.marks.children[Math.min(had, list.length - 1)]?.focus();
    }
    makeMovable(mark, begin, label, move, remove) {
        mark.classList.add("movable");
        for (const [name, value] of Object.entries({role: "slider", tabindex: 0, "aria-label": label, "aria-valuemin": 0, "aria-valuemax": round(this.seconds), "aria-valuenow": round(begin),
            "aria-valuetext": clock(begin), title: `${label}, ${clock(begin)}: drag it, or move it by arrow keys`})) mark.setAttribute(name, value);
        draggable(mark, () => {
            let at = begin;
            this.stop();
            return {
                move: event => {
                    const box = this.marks.getBoundingClientRect();
                    at = clamp(Math.round((event.clientX - box.x) / box.width * this.seconds * this.rate) / this.rate, 0, this.seconds - 1 / this.rate);
                    mark.style.left = `${at / this.seconds * 100}%`;
                    this.set(at);
                },
                end: () => { if (at !== begin) move(at); else this.set(at); },
            };
        });
        mark.addEventListener("keydown", event => {
            const step = {ArrowLeft: -1, ArrowRight: 1, PageDown: -25, PageUp: 25}[event.key];
            if (step) { const at = clamp(begin + step / this.rate, 0, this.seconds - 1 / this.rate); this.set(at); move(at); }
            else if (event.key === "Delete") remove();
            else return;
            event.preventDefault();
            event.stopPropagation();
        });
    }
    set(at, seeks = true) {
        this.at = clamp(at, 0, Math.max(0, this.seconds - 1 / this.rate));
        this.bar.value = Math.round(this.at * this.rate);
        this.bar.setAttribute("aria-valuetext", clock(this.at));
        this.readout.textContent = `${clock(this.at)} / ${clock(this.seconds)}`;
        if (seeks) this.seek(this.at);
    }
    mark(playing) {
        const other = iconButton(playing ? "pause" : "play", "");
        this.toggle.replaceChildren(...other.childNodes);
        this.toggle.setAttribute("aria-label", playing ? "Pause (space)" : "Play (space)");
    }
    async start() {
        this.stop();
        const abort = this.playing = new AbortController();
        this.mark(true);
        try {
            do {
                const from = this.at >= this.seconds - 1.5 / this.rate ? this.loop ?? 0 : this.at, begin = performance.now();
                const [path, body] = this.stream(from);
                let count = 0;
                await play(path, body, this.rate, (picture, index) => {
                    if (abort.signal.aborted) return picture.close();
                    this.draw(picture);
                    this.set(from + index / this.rate, false);
                    this.node.dispatchEvent(new CustomEvent("frame"));
                    if (++count % 12 === 0) this.speed.textContent = `${(count / (performance.now() - begin) * 1000).toFixed(0)} fps`;
                }, abort.signal);
                if (!count) break;
            } while (this.loop !== null && !abort.signal.aborted);
        } catch (error) { report(error); }
        if (this.playing === abort) this.stop();
    }
    stop() {
        if (!this.playing) return;
        this.playing.abort();
        this.playing = null;
        this.speed.textContent = "";
        this.mark(false);
        this.seek(this.at);
    }
    key(event) {
        if (event.key === " ") this.playing ? this.stop() : this.start();
        else if (this.inOut && event.key.toLowerCase() === "i") this.inOut("in");
        else if (this.inOut && event.key.toLowerCase() === "o") this.inOut("out");
        else return false;
        return true;
    }
}
