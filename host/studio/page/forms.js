// Forms made of the catalogue alone: a control for every kind of parameter, in groups, with its range, unit and step.
import {clamp, el, iconButton, relative, round} from "./dom.js";
import {curve, isMoving, valueAt, withValueAt} from "./keys.js";
import {filesOfKinds, takesFiles} from "./library.js";

let lists = 0;

export const PLACES = {column: "width", row: "height", length: "shorter"};

/** What a place is a share of, in pixels. */
export const wholeOf = (kind, size) => kind === "column" ? size.width : kind === "row" ? size.height : Math.min(size.width, size.height);

/** What a parameter starts at until it is set, as text. */
export function startOf(parameter) {
    if (parameter.start !== undefined) return parameter.start;
    const value = parameter.initial ?? parameter.default;
    return parameter.kind === "colour" && typeof value === "number" ? colourText(value) : String(value);
}
const colourText = number => "#" + (number >>> 0 & 0xffffff).toString(16).padStart(6, "0");
/** A colour's text as an input of the browser wants it; names are looked up by the browser itself. */
export function hexColour(text) {
    if (/^#[0-9a-f]{6}$/i.test(text)) return text;
    if (/^0x[0-9a-f]+$/i.test(text) || /^\d+$/.test(text)) return colourText(Number(text));
    const context = document.createElement("canvas").getContext("2d");
    context.fillStyle = text;
    return context.fillStyle;
}

/** What a parameter is called in the form: its name without the part that all parameters of the effect share. */
export function labelOf(effect, parameter) {
    const names = effect.parameters.map(({name}) => name).filter(name => name !== "duration");
    const prefix = parameter.name.startsWith(effect.name + "_") ? effect.name + "_" : parameter.name.split("_")[0] + "_";
    const short = names.every(name => name.startsWith(prefix)) ? parameter.name.slice(prefix.length) : parameter.name;
    const words = short.replace(/([a-z])([A-Z])/g, "$1 $2").replace(/_/g, " ").toLowerCase();
    return {x: "centre, across", y: "centre, down", r: "radius"}[words] ?? words;
}

/** The ends and step of a parameter's slider; places are shares of the picture in percent. */
export function rangeOf(parameter) {
    if (PLACES[parameter.kind]) return {low: 0, high: 100, step: 0.1, unit: "%"};
    const {minimum = 0, maximum = 100} = parameter.sensible ?? {};
    return {low: minimum, high: maximum, step: parameter.step ?? 1, unit: parameter.unit ?? ""};
}
/** A value's text as the number that the slider shows: of a place, pixels become percent. */
export function numberOf(parameter, text, size) {
    const value = parseFloat(text);
    return PLACES[parameter.kind] && !/%/.test(text) ? value / wholeOf(parameter.kind, size) * 100 : value;
}
export const textOfNumber = (parameter, value) =>
    round(value, PLACES[parameter.kind] ? 2 : Math.max(0, -Math.floor(Math.log10(parameter.step ?? 1)))) + (PLACES[parameter.kind] ? "%" : "");

function slider(parameter, label, context) {
    const {low, high, step, unit} = rangeOf(parameter), {get, set, size, film} = context;
    const now = () => isMoving(get()) ? valueAt(get(), film.now(), film.seconds(), film.rate()) : numberOf(parameter, get(), size());
    const store = value => {
        const text = textOfNumber(parameter, value);
        set(isMoving(get()) ? withValueAt(get(), text, film.now(), film.seconds(), film.rate()) : text, parameter.name);
    };
    const bar = el("input", {type: "range", min: low, max: high, step, "aria-label": label, oninput: () => store(Number(bar.value))});
    const exact = el("input", {type: "number", step, "aria-label": `${label}, exact`, onchange: () => store(clamp(Number(exact.value),
        parameter.bearable?.minimum ?? -Infinity, parameter.bearable?.maximum ?? Infinity))});
    const update = () => {
        const value = now();
        bar.value = value;
        bar.style.setProperty("--share", `${clamp((value - low) / (high - low), 0, 1) * 100}%`);
        if (document.activeElement !== exact) exact.value = round(value, 2);
    };
    return {nodes: [bar, exact, el("span", {class: "unit", text: unit})], update};
}

const CONTROLS = {
    number: slider, column: slider, row: slider, length: slider,
    switch(parameter, label, {get, set}) {
        const box = el("input", {type: "checkbox", role: "switch", "aria-label": label, onchange: () => set(box.checked ? "1" : "0")});
        return {nodes: [box], update: () => { box.checked = Number(get()) !== 0; }};
    },
    choice(parameter, label, {get, set}) {
        const list = el("select", {"aria-label": label, onchange: () => set(list.value)}, parameter.choices.map(({value, meaning}) => el("option", {value, text: meaning})));
        return {nodes: [list], update: () => { list.value = String(parseInt(get())); }};
    },
    word(parameter, label, {get, set}) {
        if (!parameter.separator) {
            const list = el("select", {"aria-label": label, onchange: () => set(list.value)}, parameter.words.map(word => el("option", {value: word, text: word})));
            return {nodes: [list], update: () => { list.value = get(); }};
        }
        const chips = parameter.words.map(word => el("button", {type: "button", class: "chip", text: word, onclick: () => {
            const now = get().split(parameter.separator).filter(Boolean);
            set((now.includes(word) ? now.filter(other => other !== word) : [...now, word]).join(parameter.separator));
        }}));
        return {nodes: [el("div", {class: "chips", role: "group", "aria-label": label}, chips)],
            update: () => chips.forEach((chip, i) => chip.setAttribute("aria-pressed", get().split(parameter.separator).includes(parameter.words[i])))};
    },
    colour(parameter, label, {get, set}) {
        const swatch = el("input", {type: "color", "aria-label": label, oninput: () => set(swatch.value, parameter.name)});
        const text = el("input", {type: "text", size: 9, "aria-label": `${label}, as text`, onchange: () => set(text.value.trim())});
        return {nodes: [swatch, text], update: () => { swatch.value = hexColour(get()); if (document.activeElement !== text) text.value = /^(\d+|0x[0-9a-f]+)$/i.test(get()) ? hexColour(get()) : get(); }};
    },
    seed(parameter, label, {get, set}) {
        const number = el("input", {type: "number", step: 1, "aria-label": label, onchange: () => set(number.value || "0")});
        return {nodes: [number, iconButton("dice", "Another one", () => set(String(Math.floor(Math.random() * 1e6))))], update: () => { number.value = get(); }};
    },
    /** A file of the folder: its name is typed, chosen or dropped. */
    source(parameter, label, {get, set, base}) {
        const list = el("datalist", {id: `files-${++lists}`});
        const name = el("input", {type: "text", list: list.id, spellcheck: "false", "aria-label": label, onchange: () => set(name.value), onfocus: async () => {
            const files = await filesOfKinds(parameter.kinds).catch(() => []);
            list.replaceChildren(...files.map(path => el("option", {value: relative(base(), path)})));
        }});
        takesFiles(name, ([{path}]) => set(relative(base(), path)));
        return {nodes: [name, list], update: () => { if (document.activeElement !== name) name.value = get(); }};
    },
    text(parameter, label, {get, set}) {
        const text = el("input", {type: "text", "aria-label": label, onchange: () => set(text.value)});
        return {nodes: [text], update: () => { if (document.activeElement !== text) text.value = get(); }};
    },
};

/** One parameter: its label, control, and for films the switch that sets key points. */
export function control(parameter, label, context) {
    const {nodes, update} = (CONTROLS[parameter.kind] ?? CONTROLS.text)(parameter, label, context);
    const line = el("div", {class: `control ${parameter.kind}`, title: parameter.meaning}, el("span", {class: "label", text: label}), ...nodes);
    const box = el("div", {class: "parameter"}, line);
    const {film, get, set} = context;
    let graph = null, key = null;
    if (film && parameter.keyframable && CONTROLS[parameter.kind] === slider) {
        key = iconButton("key", `Key points: let ${label} change`, () => {
            if (isMoving(get())) set(textOfNumber(parameter, valueAt(get(), film.now(), film.seconds(), film.rate())));
            else {
                const value = textOfNumber(parameter, numberOf(parameter, get(), context.size()));
                set(`@0s:${value},${round(film.seconds(), 3)}s:${value}`);
            }
        }, {class: "icon-button key", "aria-pressed": "false"});
        line.append(key);
    }
    return {node: box, update() {
        update();
        if (!key) return;
        const moving = isMoving(get());
        key.setAttribute("aria-pressed", moving);
        if (moving && !graph) {
            const {low, high, step, unit} = rangeOf(parameter);
            graph = curve({label, get, set: (text, name) => set(text, name && `${parameter.name} ${name}`), range: [low, high], step, unit,
                seconds: film.seconds, rate: film.rate, now: film.now, seek: film.seek});
            box.append(graph.node);
        } else if (!moving && graph) { graph.node.remove(); graph = null; }
        graph?.update();
    }};
}

/** The whole form of an effect: its groups, each with its parameters. The command sets the duration itself. */
export function form(effect, contextOf) {
    const groups = new Map();
    for (const parameter of effect.parameters.filter(({name}) => name !== "duration")) {
        if (!groups.has(parameter.group)) groups.set(parameter.group, []);
        groups.get(parameter.group).push(control(parameter, labelOf(effect, parameter), contextOf(parameter)));
    }
    const node = el("div", {class: "form"}, [...groups].map(([name, controls]) =>
        el("fieldset", {}, groups.size > 1 && el("legend", {text: name}), controls.map(one => one.node))));
    return {node, update: () => { for (const controls of groups.values()) for (const one of controls) one.update(); }};
}
