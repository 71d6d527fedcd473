// A slideshow: its pictures in order, times, transitions, motion and music.
import {Latest, bitmap, facts, page, post, report} from "./api.js";
import {button, clock, el, field, fileName, iconButton, keyed, moved, reorderable, round, roving, svg} from "./dom.js";
import {control} from "./forms.js";
import {filmTile, restButton, takesFiles, thumbBox} from "./library.js";
import {copyCommand, render} from "./queue.js";
import {LongList} from "./long_list.js";
import {Stage} from "./stage.js";
import * as store from "./store.js";
import {Timeline} from "./timeline.js";

let ids = Date.now();
const number = (name, low, high, step, unit, meaning) => ({name, kind: "number", sensible: {minimum: low, maximum: high}, step, unit, meaning});
const TIMES = [[number("seconds", 0.5, 20, 0.5, "s", "how long each picture stands alone"), "each picture"], [number("transitionSeconds", 0, 5, 0.1, "s", "how long one takes to become the next"), "transition"],
    [number("motionAmount", 1, 100, 1, "%", "how much larger a moving picture gets"), "motion"]];

/** Where a motion begins and ends, as shares of the picture: [x, y, side]. */
export function motionBoxes(motion, amount) {
    const side = 1 / (1 + amount / 100), room = 1 - side, middle = room / 2, whole = [0, 0, 1], inner = [middle, middle, side];
    return {zoomin: [whole, inner], zoomout: [inner, whole], panleft: [[room, middle, side], [0, middle, side]], panright: [[0, middle, side], [room, middle, side]],
        panup: [[middle, room, side], [middle, 0, side]], pandown: [[middle, 0, side], [middle, room, side]]}[motion] ?? [whole, whole];
}

export function slideshowJob(job, catalogue) {
    const doc = () => store.get().slideshow, set = (part, label) => store.change("slideshow", part, label);
    let checked = null, known = null, opened = null, madeOf = "";

    // Pictures may have a transition and a motion of their own; the command takes them in turn.
    const turn = (own, list) => { const {inputs} = doc(); return inputs.some(entry => entry[own]) ? inputs.map((entry, i) => entry[own] ?? list[i % list.length]) : list; };
    function show() {
        const {inputs, length, audio, ...rest} = doc();
        return {...rest, inputs: inputs.map(({path, seconds, caption}) => seconds === undefined && !caption ? path : {path, ...(seconds !== undefined && {seconds}), ...(caption && {caption})}),
            transitions: turn("transition", doc().transitions), motions: turn("motion", doc().motions), ...(audio.length && {audio}), ...(length && audio.length && {length})};
    }
    const stage = new Stage("The slideshow", () => draw());
    stage.setSource(1920, 1080);
    const frame = new Latest(async (request, signal) => {
        const picture = await bitmap("api/slideshow/frame", request, signal);
        if (timeline.playing) return picture.close();
        stage.show(picture);
        stage.node.dispatchEvent(new CustomEvent("shown"));
    });
    const check = new Latest(async (request, signal) => {
        checked = await post("api/slideshow/check", request, {signal});
        const rate = checked.rate[0] / checked.rate[1];
        missing.replaceChildren(...(checked.missing ?? []).map(path => el("li", {text: `${path}: cannot be read; remove it, or it is left out.`})));
        stage.setSource(checked.width, checked.height);
        timeline.setLength(checked.frames / rate, rate);
        timeline.setMarks(checked.slides.map(({begin}) => ({begin: begin / rate, end: begin / rate, kind: "chapter"})).slice(1));
        count();
        draw();
    });
    const width = () => stage.need().width ?? 960;
    const timeline = new Timeline({label: "Time in the slideshow", seek: () => draw(),
        stream: from => ["api/slideshow/stream", {view: `${page}/show/play`, show: show(), width: Math.min(960, width()), from: Math.round(from * timeline.rate), to: checked?.frames ?? 0}],
        draw: picture => stage.show(picture)});
    function draw() {
        if (!checked || timeline.playing || !doc().inputs.length) return;
        frame.ask({view: `${page}/show/main`, show: show(), width: width(), frame: Math.round(timeline.at * timeline.rate)});
    }

    const take = entries => {
        const sounds = entries.filter(({kind}) => kind === "sound").map(({path}) => path), pictures = entries.filter(({kind}) => kind === "picture" || kind === "film");
        set(now => ({inputs: [...now.inputs, ...pictures.map(({path}) => ({path, id: ++ids}))], audio: [...now.audio, ...sounds]}));
        store.show({panel: pictures.length ? "slides" : "show"});
    };
    const list = el("ol", {class: "chain", "aria-label": "Pictures, in their order"});
    takesFiles(list, take);
    takesFiles(stage.node, take);
    const order = reorderable(list, (from, to) => set(({inputs}) => ({inputs: moved(inputs, from, to)})));
    const change = (id, part, label) => set(({inputs}) => ({inputs: inputs.map(entry => entry.id === id ? {...entry, ...part} : entry)}), label && `${id} ${label}`);
    function item({id, path}) {
        const entry = () => doc().inputs.find(other => other.id === id) ?? {};
        let inside = null, node = el("li", {class: "entry"}), picture = thumbBox(path);
        const head = el("button", {type: "button", class: "title", "aria-expanded": "false", title: path, onclick: () => { opened = opened === id ? null : id; if (opened) seekTo(id); lists(); }}, el("span", {text: fileName(path)}));
        const time = el("span", {class: "muted"});
        node.append(el("div", {class: "row"}, order.grip(node), picture, head, time, iconButton("trash", `Remove ${fileName(path)}`, () => set(({inputs}) => ({inputs: inputs.filter(other => other.id !== id)})))));
        return {node, dispose: () => picture.dispose?.(), update(_, index) {
            head.setAttribute("aria-expanded", opened === id);
            time.textContent = `${round(entry().seconds ?? doc().seconds)} s`;
            // Only an open line has controls.
            if (opened === id && !inside) node.append((inside = details(id, entry, path)).node);
            else if (opened !== id && inside) { inside.node.remove(); inside = null; }
            inside?.update(index);
        }};
    }
    const slides = new LongList(list, item);
    function details(id, entry, path) {
        const seconds = control(TIMES[0][0], "alone", {get: () => String(entry().seconds ?? doc().seconds), set: (value, name) => change(id, {seconds: Number(value)}, name), size: () => stage.source});
        const caption = el("input", {type: "text", onchange: () => change(id, {caption: caption.value || undefined})});
        const choice = (own, words) => el("select", {onchange: event => change(id, {[own]: event.target.value || undefined})}, el("option", {value: "", text: "as set for all"}), words.map(word => el("option", {value: word, text: word})));
        const transition = choice("transition", catalogue.transitions), motion = choice("motion", catalogue.motions), boxes = [svg("rect", {class: "motion"}), svg("rect", {class: "motion end"})];
        const preview = el("div", {class: "motion-preview"}, thumbBox(path), svg("svg", {viewBox: "0 0 160 90", role: "img", "aria-label": "Where the motion begins (line) and ends (dashes)"}, ...boxes));
        const line = (label, node) => el("label", {class: "control"}, el("span", {class: "label", text: label}), node);
        return {node: el("div", {class: "inside"}, seconds.node, line("caption", caption), line("then", transition), line("motion", motion), preview), update(index) {
            seconds.update();
            if (document.activeElement !== caption) caption.value = entry().caption ?? "";
            transition.value = entry().transition ?? "";
            motion.value = entry().motion ?? "";
            const now = entry().motion ?? doc().motions[index % doc().motions.length];
            motionBoxes(now, doc().motionAmount).forEach(([x, y, side], i) => {
                for (const [name, value] of Object.entries({x: 2 + x * 156, y: 2 + y * 86, width: side * 156, height: side * 86})) boxes[i].setAttribute(name, value);
            });
            preview.hidden = now === "none";
        }};
    }
    function seekTo(id) {
        const at = doc().inputs.findIndex(entry => entry.id === id), slide = checked?.slides.find(({path, begin}, i) => i >= at && path === doc().inputs[at]?.path) ?? checked?.slides[at];
        if (slide) timeline.set((slide.begin + Math.min(slide.end - slide.begin - 1, timeline.rate * (doc().transitionSeconds + 0.2))) / timeline.rate);
    }
    const music = el("ol", {class: "chain", "aria-label": "Music"});
    takesFiles(music, take);
    const musicOrder = reorderable(music, (from, to) => set(({audio}) => ({audio: moved(audio, from, to)})));
    const musicItem = ({path}) => {
        const node = el("li", {class: "entry"}), time = el("span", {class: "muted"});
        facts(path).then(({seconds}) => { time.textContent = clock(seconds, 0); }, report);
        node.append(el("div", {class: "row"}, musicOrder.grip(node), el("span", {class: "title row", text: fileName(path)}), time,
            iconButton("trash", `Remove ${fileName(path)}`, () => set(({audio}) => ({audio: audio.filter(other => other !== path)})))));
        return {node};
    };
    const asLong = el("input", {type: "checkbox", role: "switch", "aria-label": "As long as the music", onchange: () => set({length: asLong.checked ? "audio" : null})});
    const noMusic = el("p", {class: "muted", text: "None. Add a sound file of the folder."});
    function lists() {
        slides.set(doc().inputs, opened);
        keyed(music, doc().audio.map(path => ({path})), ({path}) => path, musicItem);
        asLong.checked = doc().length === "audio";
        asLong.disabled = !doc().audio.length;
        noMusic.hidden = doc().audio.length > 0;
    }

    // Transitions as small films of the first pictures.
    const words = catalogue.transitions.filter(word => word !== "random"), gallery = el("div", {class: "tiles", role: "group", "aria-label": "Transitions, in turn"});
    const tiles = words.map(word => {
        const one = filmTile(word, `Transition ${word}`, () => set(({transitions}) => {
            const next = transitions.includes(word) ? transitions.filter(other => other !== word) : [...transitions, word];
            return {transitions: next.length ? next : transitions};
        }));
        gallery.append(one.node);
        return {word, one};
    });
    roving(gallery, ".tile")();
    const small = () => doc().inputs.slice(0, 2).map(({path}) => path);
    function refreshTiles() {
        const key = small().join("|");
        if (key === madeOf || small().length < 2) return;
        madeOf = key;
        for (const {word, one} of tiles) one.show(async () => ["api/slideshow/stream", {view: `${page}/show/tile-${word}`, from: 0, to: 50,
            show: {inputs: small(), seconds: 0.4, transitionSeconds: 1.2, transitions: [word], motions: ["none"], fit: "crop", size: "240x180", rate: 25}}]);
    }
    const motionChips = control({name: "motions", kind: "word", words: catalogue.motions, separator: ";", meaning: "how pictures move, in turn"}, "in turn",
        {get: () => doc().motions.join(";"), set: value => set({motions: value ? value.split(";") : ["none"]}), size: () => stage.source});
    const times = TIMES.map(([parameter, label]) => control(parameter, label, {get: () => String(doc()[parameter.name]), set: (value, name) => set({[parameter.name]: Number(value)}, name), size: () => stage.source}));
    const select = (key, values) => { const node = el("select", {onchange: () => set({[key]: node.value})}, values.map(([value, text]) => el("option", {value, text}))); return node; };
    const fit = select("fit", catalogue.fits.map(word => [word, word])), size = select("size", [["1280x720", "1280 x 720"], ["1920x1080", "1920 x 1080"], ["3840x2160", "3840 x 2160"], ["1080x1920", "1080 x 1920, upright"]]);

    const output = () => ({kind: "slideshow", ...show()});
    const total = el("h2", {class: "file-title"}), missing = el("ul", {class: "faults"}), hint = el("p", {class: "hint", text: "No picture yet. Choose some among the files and add them."});
    const needs = [iconButton("copy", "Copy the command line", () => copyCommand({...output(), output: "slideshow.mp4"})), button("Render", () => render("Render the slideshow", "slideshow.mp4", output), {class: "primary"}, "film")];
    const count = () => { const {length} = doc().inputs; total.textContent = length ? `${length} ${length === 1 ? "picture" : "pictures"}${checked ? `, ${clock(timeline.seconds, 0)}` : ""}` : ""; };
    return {
        kinds: ["picture", "film", "sound"], many: true, take,
        centre: el("div", {class: "centre"}, el("div", {class: "bar"}, total, ...needs), stage.node, timeline.node),
        panels: [{id: "slides", label: "Pictures", node: el("div", {class: "panel"}, missing, hint, list)},
            {id: "show", label: "Settings", node: el("div", {class: "panel"}, el("h3", {text: "Times"}), times[0].node, times[1].node, el("div", {class: "row heading"}, el("h3", {text: "Transitions, in turn"}), restButton()), gallery, el("h3", {text: "Motion"}), motionChips.node, times[2].node,
                el("h3", {text: "Music"}), noMusic, music, el("label", {class: "control"}, el("span", {class: "label", text: "as long as the music"}), asLong), el("h3", {text: "The film"}), field("Pictures of another shape", fit), field("Size", size))}],
        key: event => timeline.key(event),
        leave: () => timeline.stop(),
        update(state) {
            if (state.panel === "show") refreshTiles();
            if (known === state.slideshow) return;
            known = state.slideshow;
            const some = doc().inputs.length > 0;
            stage.setEmpty(some ? "" : "Add pictures to see the slideshow.");
            hint.hidden = some;
            count();
            for (const one of needs) one.disabled = !some;
            timeline.node.hidden = !some;
            for (const {word, one} of tiles) one.node.setAttribute("aria-pressed", doc().transitions.includes(word));
            for (const one of [...times, motionChips]) one.update();
            fit.value = doc().fit;
            size.value = doc().size;
            lists();
            if (some) { timeline.stop(); check.ask(show()); }
        },
    };
}
