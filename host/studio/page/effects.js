// A picture or a film under a chain of effects.
import {Latest, bitmap, facts, load, page, paint, post, report} from "./api.js";
import {announce, ask, button, el, field, fileName, iconButton, keyed, moved, reorderable, round, roving, stem} from "./dom.js";
import {control, form, startOf} from "./forms.js";
import {AREAS, Handles, shapesOf, shareOf, textOfShare} from "./handles.js";
import {isMoving, valueAt, withValueAt} from "./keys.js";
import {tile} from "./library.js";
import {copyCommand, render, saveFile} from "./queue.js";
import {Stage} from "./stage.js";
import * as store from "./store.js";
import {Timeline} from "./timeline.js";

let ids = Date.now();
const EVERYWHERE = "everywhere";
const FIRST_AREA = {circle: "circle,50%,50%,30%", ellipse: "ellipse,50%,50%,30%,30%", rectangle: "rectangle,25%,25%,50%,50%"};
const SOFT = {name: "soft", kind: "length", meaning: "how far the effect comes in gradually from the edge", keyframable: false};

export function effectsJob(job, catalogue) {
    const film = job === "film", effects = new Map(catalogue.effects.map(effect => [effect.name, effect]));
    const doc = () => store.get()[job];
    const set = (part, label) => store.change(job, part, label);
    let about = null, opened = null, tilesOf = "", shownOf = "", adding = false;

    const stage = new Stage(film ? "The film's frame under the effects" : "The picture under the effects", () => ask_());
    const handles = new Handles(stage);
    const size = () => stage.source;

    // What the server renders.
    const requests = () => doc().chain.filter(entry => !entry.off).map(({id, off, ...request}) => request);
    const changesAlpha = () => doc().chain.some(entry => !entry.off && effects.get(entry.name)?.traits.includes("changes-alpha"));
    const span = () => film ? {...(doc().in !== null && {in: doc().in}), ...(doc().out !== null && {out: doc().out})} : {};
    const body = (view, chain) => ({view: `${page}/${job}/${view}`, path: doc().path, at: timeline?.at ?? 0, ...stage.need(), effects: chain, ...span()});
    const result = new Latest(async (request, signal) => {
        try {
            const picture = await bitmap("api/still", request, signal);
            if (request.path !== doc().path || timeline?.playing) return picture.close();
            stage.show(picture, request.crop);
            stage.node.dispatchEvent(new CustomEvent("shown", {detail: request.effects}));
        } finally {
            shownOf = request.path;
            refreshTiles();
        }
    });
    const original = new Latest(async (request, signal) => stage.show(await bitmap("api/still", request, signal), request.crop, "original"));
    let originalOf = "";
    function ask_() {
        if (!about || timeline?.playing || !stage.node.clientWidth) return;
        result.ask({...body("main", requests()), ...(changesAlpha() && {format: "png"})});
        const request = body("original", []), key = JSON.stringify(request);
        if (stage.split !== null && key !== originalOf) { originalOf = key; original.ask(request); }
    }

    const timeline = film ? new Timeline({label: "Time in the film",
        seek: () => { ask_(); refreshForms(); handles.update(); },
        stream: from => ["api/stream", {...body("play", requests()), crop: undefined, width: Math.min(960, stage.need().width ?? 960), from, to: doc().out ?? about.seconds}],
        draw: picture => stage.show(picture),
        inOut: which => {
            const at = round(timeline.at + (which === "out" ? 1 / timeline.rate : 0), 3);
            set({[which]: doc()[which] === Number(at) ? null : Number(at)});
        }}) : null;

    // The time that one effect works, for its key points: from its window's or the part's begin.
    const windowOf = entry => {
        const begin = doc().in ?? 0, end = doc().out ?? about?.seconds ?? 1, match = /^([\d.]+)s-(?:([\d.]+)s)?$/.exec(entry?.window ?? "");
        return match ? [Number(match[1]), match[2] ? Number(match[2]) : end] : [begin, end];
    };
    const timesOf = entry => film && {rate: () => timeline.rate, seconds: () => { const [a, b] = windowOf(entry()); return Math.max(b - a, 0.04); },
        now: () => Math.max(0, timeline.at - windowOf(entry())[0]), seek: at => timeline.set(at + windowOf(entry())[0])};

    // The chain.
    const update = (id, how, label) => set(({chain}) => ({chain: chain.map(entry => entry.id === id ? how(entry) : entry)}), label && `${id} ${label}`);
    const find = id => doc().chain.find(entry => entry.id === id);
    const setParameter = (id, name, value, label) => update(id, entry => ({...entry, parameters: {...entry.parameters, [name]: value}}), label);
    /** Texts may leave the effect's prefix out of the names of parameters; forms go by the whole names. */
    function fullNames({name, parameters = {}}) {
        const known = effects.get(name)?.parameters ?? [], full = short => (known.find(one => one.name === short) ?? known.find(one => one.name.endsWith("_" + short)))?.name ?? short;
        return Object.fromEntries(Object.entries(parameters).map(([key, value]) => [full(key), String(value)]));
    }
    async function add(texts) {
        try {
            const parts = (await Promise.all(texts.map(text => post("api/request", {text})))).flatMap(reply => reply.requests);
            const chain = parts.map(part => ({...part, parameters: fullNames(part), id: ++ids}));
            opened = chain[0]?.id;
            set(({chain: before}) => ({chain: [...before, ...chain]}));
            store.show({panel: "chain"});
            announce(`${chain.length} added; the chain has ${doc().chain.length}`);
        } catch (error) { report(error); }
    }

    const list = el("ol", {class: "chain", "aria-label": "Effects, in their order"});
    const order = reorderable(list, (from, to) => set(({chain}) => ({chain: moved(chain, from, to)})));
    function item({id, name}) {
        const effect = effects.get(name), entry = () => find(id) ?? {parameters: {}};
        const times = timesOf(entry);
        const contextOf = parameter => ({size, film: times, get: () => entry().parameters[parameter.name] ?? startOf(parameter),
            set: (value, label) => setParameter(id, parameter.name, value, label)});
        const parts = effect && form(effect, contextOf), where = area(id, entry, times), when = film ? moment(id, entry) : null;
        const eye = iconButton("eye", "Switch on or off", () => update(id, now => ({...now, off: !now.off})), {"aria-pressed": "true"});
        const head = el("button", {type: "button", class: "title", "aria-expanded": "false", onclick: () => { opened = opened === id ? null : id; refreshForms(); showHandles(); }, text: effect ? label(name) : name});
        const inside = el("div", {class: "inside"}, el("p", {class: "muted", text: effect?.summary ?? "This effect is not in the module."}), parts?.node, where.node, when?.node);
        const node = el("li", {class: "entry"});
        node.append(el("div", {class: "row"}, order.grip(node), head, eye, iconButton("trash", `Remove ${name}`, () => set(({chain}) => ({chain: chain.filter(other => other.id !== id)})))), inside);
        return {node, update() {
            const open = opened === id;
            inside.hidden = !open;
            head.setAttribute("aria-expanded", open);
            node.classList.toggle("off", Boolean(entry().off));
            eye.setAttribute("aria-pressed", !entry().off);
            if (open) { parts?.update(); where.update(); when?.update(); }
        }};
    }
    /** Where in the picture an effect works. */
    function area(id, entry, times) {
        const kinds = [EVERYWHERE, ...["inside", "outside"].flatMap(side => Object.keys(AREAS).map(kind => `${side} ${kind}`))];
        const choice = el("select", {"aria-label": "Where the effect works", onchange: () => {
            const [side, kind] = choice.value.split(" ");
            update(id, ({inside, outside, ...rest}) => kind ? {...rest, [side]: (inside ?? outside)?.startsWith(kind) ? inside ?? outside : FIRST_AREA[kind]} : (delete rest.soft, rest));
            showHandles();
        }}, kinds.map(kind => el("option", {value: kind, text: kind})));
        const soft = control(SOFT, "soft edge", {size, film: null, get: () => entry().soft ?? "0%", set: (value, name) => update(id, now => ({...now, soft: value}), name)});
        return {node: el("fieldset", {}, el("legend", {text: "Where"}), el("div", {class: "control"}, el("span", {class: "label", text: "area"}), choice), soft.node), update() {
            const side = entry().inside ? "inside" : entry().outside ? "outside" : null, text = side && entry()[side];
            const kind = side && Object.keys(AREAS).find(name => text.startsWith(name + ","));
            choice.value = kind ? `${side} ${kind}` : EVERYWHERE;
            soft.node.hidden = !kind;
            soft.update();
        }};
    }
    /** When in the film an effect works. */
    function moment(id, entry) {
        const store_ = () => update(id, ({window, ...rest}) => begin.value === "" && end.value === "" ? rest : {...rest, window: `${begin.value || 0}s-${end.value === "" ? "" : end.value + "s"}`});
        const number = name => el("input", {type: "number", min: 0, step: 0.04, "aria-label": name, onchange: store_});
        const begin = number("Begin, in seconds"), end = number("End, in seconds");
        return {node: el("fieldset", {}, el("legend", {text: "When"}), el("div", {class: "control"}, el("span", {class: "label", text: "from, to"}), begin, end, el("span", {class: "unit", text: "s"}))), update() {
            const match = /^([\d.]+)s?-(?:([\d.]+)s)?$/.exec(entry().window ?? "");
            if (document.activeElement !== begin) begin.value = match?.[1] ?? "";
            if (document.activeElement !== end) end.value = match?.[2] ?? "";
        }};
    }
    const label = name => name.replace(/^EffectName/, "").replace(/_/g, " ").replace(/([a-z])([A-Z0-9])/g, "$1 $2").toLowerCase();

    function showHandles() {
        const entry = find(opened), effect = entry && effects.get(entry.name);
        if (!effect || entry.off || !about) return handles.show([]);
        const times = timesOf(() => find(opened) ?? entry), id = entry.id;
        const number = (text, kind) => isMoving(text) ? valueAt(text, times.now(), times.seconds(), times.rate()) / (/%/.test(text) ? 100 : 1) : shareOf(text, kind, size());
        const store_ = (text, share) => film && isMoving(text) ? withValueAt(text, textOfShare(share), times.now(), times.seconds(), times.rate()) : textOfShare(share);
        const shapes = shapesOf(effect).map(shape => {
            const text = part => find(id)?.parameters[shape.parts[part].name] ?? startOf(shape.parts[part]);
            return {kind: shape.kind, name: label(effect.name), get: part => number(text(part), shape.parts[part].kind),
                set: values => update(id, now => ({...now, parameters: {...now.parameters, ...Object.fromEntries(Object.entries(values).filter(([part]) => shape.parts[part])
                    .map(([part, share]) => [shape.parts[part].name, store_(text(part), share)]))}}), "handle")};
        });
        const side = entry.inside ? "inside" : "outside", kind = entry[side] && Object.keys(AREAS).find(name => entry[side].startsWith(name + ","));
        if (kind) {
            const of = {x: "column", rx: "column", w: "column", y: "row", ry: "row", h: "row", r: "length"};
            const texts = () => Object.fromEntries(AREAS[kind].map((part, i) => [part, (find(id)?.[side] ?? entry[side]).split(",")[i + 1]]));
            const get = part => part === "x2" ? get("x") + get("w") : part === "y2" ? get("y") + get("h") : number(texts()[part], of[part]);
            shapes.push({kind: kind === "rectangle" ? "rectangle" : kind, name: "area", get, set: values => {
                const next = {...texts()};
                if ("x2" in values || "x" in values) { const x = values.x ?? get("x"), x2 = values.x2 ?? get("x2"); if (kind === "rectangle") values = {...values, w: Math.max(0.01, x2 - x)}; }
                if ("y2" in values || "y" in values) { const y = values.y ?? get("y"), y2 = values.y2 ?? get("y2"); if (kind === "rectangle") values = {...values, h: Math.max(0.01, y2 - y)}; }
                for (const [part, share] of Object.entries(values)) if (part in next) next[part] = textOfShare(share);
                update(id, now => ({...now, [side]: [kind, ...Object.values(next)].join(",")}), "area");
            }});
        }
        handles.show(shapes);
    }
    function refreshForms() { keyed(list, doc().chain, entry => entry.id, item); }

    // Presets of one's own.
    async function savePreset() {
        const values = await ask("Save the chain as a preset", [field("Name", el("input", {type: "text", name: "name", required: true, pattern: "[a-z0-9_\\-]+", placeholder: "warm-evening"}), "small letters, digits and -"),
            field("What it does", el("input", {type: "text", name: "meaning"}))], "Save", "The file is for this studio and for nifikral apply --presets FILE.");
        if (!values?.name) return;
        try {
            const {texts} = await post("api/request", {requests: requests()});
            await saveFile(`${values.name}.presets`, `${values.meaning ? `# ${values.meaning}\n` : ""}${values.name} = ${texts.join(" ")}\n`);
        } catch (error) { report(error); }
    }
    /** A file of presets: adds the chain of its last line. */
    async function loadPreset(path) {
        try {
            const text = await load(path, true), line = text.replace(/\n[ \t]+/g, " ").split("\n").filter(part => /^[^#\s].*=/.test(part)).pop();
            if (!line) throw new Error(`${path}: holds no preset; a preset is a line NAME = EFFECT EFFECT.`);
            await add(line.slice(line.indexOf("=") + 1).trim().split(/\s+/));
        } catch (error) { report(error); }
    }

    // The tiles.
    const search = el("input", {type: "search", placeholder: "Find an effect: blur, old photo, ...", "aria-label": "Find an effect", oninput: () => filterTiles()});
    const tiles = [];
    const groups = new Map();
    const addTile = (category, name, texts, summary, words) => {
        const one = tile(name, summary, () => add(texts));
        tiles.push({...one, texts, words: `${name} ${summary} ${words}`.toLowerCase()});
        if (!groups.has(category)) groups.set(category, el("div", {class: "tiles"}));
        groups.get(category).append(one.node);
    };
    for (const preset of (catalogue.presets ?? []).filter(({requests}) => film || !requests.some(text => /^\w+@/.test(text)))) addTile("Presets", preset.name, ["@" + preset.name], preset.meaning, "");
    for (const effect of catalogue.effects.filter(({traits}) => !traits.includes("generator"))) addTile(effect.category, label(effect.name), effect.example ?? [effect.name], effect.summary, effect.synonyms.join(" "));
    const sections = [...groups].map(([name, box]) => el("section", {}, el("h3", {text: name}), box));
    const gallery = el("div", {class: "gallery", role: "group", "aria-label": "Effects on this picture"}, sections);
    const firstStop = roving(gallery, ".tile");
    firstStop();
    function filterTiles() {
        const words = search.value.toLowerCase().split(/\s+/);
        for (const one of tiles) one.node.hidden = !words.every(word => one.words.includes(word));
        for (const section of sections) section.hidden = ![...section.querySelectorAll(".tile")].some(node => !node.hidden);
    }
    /** The tiles wait until the picture itself is there. */
    function refreshTiles() {
        const key = `${doc().path}|${timeline ? Math.round(timeline.at) : 0}`;
        if (!adding || !about || shownOf !== doc().path || key === tilesOf) return;
        tilesOf = key;
        for (const [index, one] of tiles.entries())
            one.refresh(() => paint(one.canvas, "api/still", {view: `${page}/${job}/tile${index}`, path: doc().path, at: timeline?.at ?? 0, width: 160, effects: one.texts}).catch(report));
    }

    const output = () => ({kind: "apply", input: doc().path, effects: requests(), ...span()});
    const name = () => `${stem(doc().path)}-${doc().chain.at(-1)?.name.toLowerCase() ?? "copy"}${film ? ".mp4" : /\.(png|webp|tiff?)$/i.exec(doc().path)?.[0] ?? (changesAlpha() ? ".png" : ".jpg")}`;
    const split = iconButton("split", "Compare with the original (C)", () => { stage.setSplit(stage.split === null ? 0.5 : null); split.setAttribute("aria-pressed", stage.split !== null); ask_(); }, {"aria-pressed": "false"});
    const title = el("h2", {class: "file-title"});
    const make = button(film ? "Render" : "Save", () => render(film ? "Render the film" : "Save the picture", name(), output), {class: "primary"}, "save");
    const copy = iconButton("copy", "Copy the command line", () => copyCommand({...output(), output: name()}));
    const bar = el("div", {class: "bar"}, title, split, copy, make);
    const hint = el("p", {class: "hint", text: "No effect yet. Choose one under Effects."});
    const preset = button("Save as preset", savePreset, {class: "quiet"}, "bookmark");

    let drawn = null, openedPath = null;
    async function open(path) {
        openedPath = path;
        about = null;
        try {
            const known = path ? await facts(path) : null;
            if (openedPath !== path) return;
            about = known;
        } catch (error) { report(error); }
        stage.setEmpty(about ? "" : `Choose a ${job} among the files.`);
        handles.show([]);
        if (!about) return;
        originalOf = "";
        stage.setSource(about.width, about.height);
        timeline?.setLength(about.seconds, about.rate[0] / about.rate[1]);
        marks();
        ask_();
        showHandles();
        refreshForms();
        refreshTiles();
    }
    const marks = () => {
        if (!film || !about) return;
        for (const which of ["in", "out"]) timeline.ends[which].setAttribute("aria-pressed", doc()[which] !== null);
        timeline.setMarks([{begin: doc().in ?? 0, end: doc().out ?? about.seconds, kind: "part"},
        ...doc().chain.filter(entry => entry.window && !entry.off).map(entry => { const [begin, end] = windowOf(entry); return {begin, end, kind: "window"}; })]);
    };

    return {
        kinds: [job, "presets"], many: false,
        take([entry]) {
            if (entry.kind === "presets") return loadPreset(entry.path);
            set({path: entry.path, ...(film && {in: null, out: null})});
        },
        centre: el("div", {class: "centre"}, bar, stage.node, timeline?.node),
        panels: [{id: "add", label: "Effects", node: el("div", {class: "panel"}, search, gallery)},
            {id: "chain", label: "Chain", node: el("div", {class: "panel"}, hint, list, el("div", {class: "row"}, preset))}],
        current: () => doc().path,
        key: event => event.key.toLowerCase() === "c" ? (split.click(), true) : timeline?.key(event) ?? false,
        leave() { timeline?.stop(); result.cancel(); },
        update(state) {
            const now = state[job];
            adding = state.panel === "add";
            if (openedPath !== now.path) open(now.path);
            refreshTiles();
            if (drawn === now) return;
            const before = drawn;
            drawn = now;
            title.textContent = now.path ? fileName(now.path) : "";
            for (const one of [make, copy, split]) one.disabled = !now.path;
            hint.hidden = now.chain.length > 0;
            preset.hidden = !now.chain.length;
            if (opened && !now.chain.some(entry => entry.id === opened)) opened = null;
            refreshForms();
            marks();
            if (before && before.chain.map(entry => entry.id + entry.off).join() === now.chain.map(entry => entry.id + entry.off).join()) handles.update(); else showHandles();
            ask_();
        },
    };
}
