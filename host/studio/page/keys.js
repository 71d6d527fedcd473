// Values that change: the command's own texts of them, "1..4~in-out" and "@0:1,2s:4", as key points, and back; and a curve
// on which they are set.
import {clamp, draggable, el, iconButton, round, svg} from "./dom.js";

export const SHAPES = ["linear", "in", "out", "in-out", "hold"];
const ease = {linear: t => t, in: t => t * t, out: t => t * (2 - t), "in-out": t => t * t * (3 - 2 * t), hold: t => t < 1 ? 0 : 1};

export const isMoving = text => typeof text === "string" && (text.startsWith("@") || /[^.]\.\.[^.]/.test(text));

/** The key points of a text: {at: seconds, value: text, shape}. `seconds` is how long the effect works, `rate` its frames a second. */
export function points(text, seconds, rate) {
    const split = (part, at) => { const [value, shape = "linear"] = part.split("~"); return {at, value, shape}; };
    if (text.startsWith("@"))
        return text.slice(1).split(",").map(part => {
            const colon = part.indexOf(":"), when = part.slice(0, colon);
            return split(part.slice(colon + 1), when.endsWith("s") ? parseFloat(when) : parseFloat(when) / rate);
        });
    const values = text.split("..");
    return values.map((part, index) => split(part, values.length > 1 ? seconds * index / (values.length - 1) : 0));
}

export const textOf = list => "@" + [...list].sort((a, b) => a.at - b.at)
    .map(({at, value, shape}) => `${round(at, 3)}s:${value}${shape === "linear" ? "" : "~" + shape}`).join(",");

/** The value at a time, as a number in the unit of its text ("50%" is 50). */
export function valueAt(text, time, seconds, rate) {
    if (!isMoving(text)) return parseFloat(text);
    const list = points(text, seconds, rate), next = list.findIndex(point => point.at > time);
    if (next === 0) return parseFloat(list[0].value);
    if (next < 0) return parseFloat(list[list.length - 1].value);
    const [a, b] = [list[next - 1], list[next]], from = parseFloat(a.value), to = parseFloat(b.value);
    return from + (to - from) * ease[b.shape]((time - a.at) / (b.at - a.at));
}

/** The text with a value at a time: a key point where the value moves already, else the value alone. */
export function withValueAt(text, value, time, seconds, rate) {
    if (!isMoving(text)) return value;
    const list = points(text, seconds, rate), same = list.findIndex(point => Math.abs(point.at - time) < 0.5 / rate);
    if (same >= 0) list[same] = {...list[same], value};
    else list.push({at: time, value, shape: "linear"});
    return textOf(list);
}

/** A curve editor: get() is the text, set(text, label) stores it; range are the ends of the scale. */
export function curve({label, get, set, range, step, unit, seconds, rate, now, seek}) {
    const W = 300, H = 96, pad = 8;
    const drawing = svg("svg", {viewBox: `0 0 ${W} ${H}`, class: "curve", role: "group", "aria-label": `Key points of ${label}`});
    const shape = el("select", {"aria-label": "Way to the chosen key point", onchange: () => edit(list => { list[chosen].shape = shape.value; })},
        SHAPES.map(name => el("option", {value: name, text: name})));
    const readout = el("output", {class: "muted"});
    let chosen = 0;
    const x = at => pad + clamp(at / Math.max(seconds(), 0.001), 0, 1) * (W - 2 * pad);
    const y = value => H - pad - (clamp(value, range[0], range[1]) - range[0]) / (range[1] - range[0]) * (H - 2 * pad);
    const list = () => points(get(), seconds(), rate()).sort((a, b) => a.at - b.at);
    const suffix = () => /%$/.test(list()[0].value) ? "%" : "";
    function edit(how, name = "") {
        const next = list();
        how(next);
        const at = next[chosen];
        next.sort((a, b) => a.at - b.at);
        chosen = Math.max(0, next.indexOf(at));
        set(textOf(next), name);
    }
    const snap = (value, by) => Math.round(value / by) * by;
    const place = event => {
        const box = drawing.getBoundingClientRect(), px = (event.clientX - box.x) / box.width * W, py = (event.clientY - box.y) / box.height * H;
        const value = range[0] + (H - pad - py) / (H - 2 * pad) * (range[1] - range[0]);
        return {at: snap(clamp((px - pad) / (W - 2 * pad), 0, 1) * seconds(), 1 / rate()), value: round(snap(clamp(value, range[0], range[1]), step), 4) + suffix()};
    };
    const insert = point => edit(next => { next.push({...point, shape: "linear"}); chosen = next.length - 1; });
    drawing.addEventListener("dblclick", event => insert(place(event)));
    function insertNow() {
        const at = now(), same = list().findIndex(point => Math.abs(point.at - at) < 0.5 / rate());
        if (same >= 0) { chosen = same; update(); } else insert({at, value: round(snap(valueAt(get(), at, seconds(), rate()), step), 4) + suffix()});
        dots[chosen].focus();
    }
    function remove(index) { if (dots.length > 1) edit(next => { next.splice(index, 1); chosen = Math.max(0, index - 1); }); }
    function dot(index) {
        const node = svg("circle", {r: 6, tabindex: 0, role: "slider", class: "key-point"});
        draggable(node, () => { chosen = index; return {move: event => edit(next => { next[chosen] = {...next[chosen], ...place(event)}; }, "curve")}; });
        node.addEventListener("focus", () => { chosen = index; update(); });
        node.addEventListener("keydown", event => {
            const by = event.shiftKey ? 10 : 1, move = {ArrowLeft: [-by, 0], ArrowRight: [by, 0], ArrowUp: [0, by], ArrowDown: [0, -by]}[event.key];
            if (event.key === "Delete") remove(index);
            else if (event.key === "Enter") seek?.(list()[index].at);
            else if (move) edit(next => {
                const point = next[index];
                point.at = clamp(point.at + move[0] / rate(), 0, seconds());
                point.value = round(clamp(parseFloat(point.value) + move[1] * step, range[0], range[1]), 4) + suffix();
            }, "curve");
            else return;
            event.preventDefault();
            event.stopPropagation();
        });
        return node;
    }
    let dots = [];
    const line = svg("path", {class: "line"}), cursor = svg("path", {class: "cursor"});
    drawing.append(line, cursor);
    function update() {
        if (!isMoving(get())) return;
        const all = list();
        if (dots.length !== all.length) {
            const had = dots.indexOf(document.activeElement);
            for (const node of dots) node.remove();
            dots = all.map((_, index) => dot(index));
            drawing.append(...dots);
            if (had >= 0) dots[Math.min(chosen, dots.length - 1)].focus();
        }
        chosen = Math.min(chosen, all.length - 1);
        const samples = Array.from({length: 101}, (_, i) => i / 100 * seconds());
        line.setAttribute("d", samples.map((at, i) => `${i ? "L" : "M"}${x(at).toFixed(1)} ${y(valueAt(get(), at, seconds(), rate())).toFixed(1)}`).join(""));
        cursor.setAttribute("d", `M${x(now()).toFixed(1)} 0V${H}`);
        all.forEach((point, index) => {
            const node = dots[index];
            node.setAttribute("cx", x(point.at));
            node.setAttribute("cy", y(parseFloat(point.value)));
            node.classList.toggle("chosen", index === chosen);
            node.setAttribute("aria-label", `Key point ${index + 1}`);
            node.setAttribute("aria-valuenow", parseFloat(point.value));
            node.setAttribute("aria-valuetext", `${point.value} ${unit ?? ""} at ${round(point.at)} s`);
        });
        shape.value = all[chosen].shape;
        shape.disabled = chosen === 0;
        less.disabled = all.length === 1;
        readout.textContent = `${round(all[chosen].at)} s: ${all[chosen].value}`;
    }
    const less = iconButton("trash", "Remove the chosen key point (Delete)", () => remove(chosen));
    update();
    return {node: el("div", {class: "curve-box"}, drawing, el("div", {class: "row"}, readout,
        iconButton("plus", "Add a key point at this time (or double-click on the curve)", insertNow), less, shape)), update};
}
