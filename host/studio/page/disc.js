// A disc: its films and slideshows, their chapters, the menus, and what room they take.
import {Latest, bitmap, facts, load, page, post, report} from "./api.js";
import {button, clock, el, field, fileName, folderOf, iconButton, keyed, moved, relative, reorderable, resolve, round, stem} from "./dom.js";
import {discMenus} from "./disc_menus.js";
import {control} from "./forms.js";
import {takesFiles, thumbBox} from "./library.js";
import {copyCommand, render, saveFile} from "./queue.js";
import {Stage} from "./stage.js";
import * as store from "./store.js";
import {Timeline} from "./timeline.js";

const CHECK_MS = 700;
const beginOf = chapter => typeof chapter === "number" ? chapter : chapter.begin;
const bytes = value => value > 1e9 ? `${round(value / 1e9, 2)} GB` : `${round(value / 1e6, 0)} MB`;

export function discJob(job, catalogue) {
    const doc = () => store.get().disc, project = () => doc().project, base = () => folderOf(doc().path);
    const set = (part, label) => store.change("disc", now => ({project: {...now.project, ...(typeof part === "function" ? part(now.project) : part)}}), label);
    const setFilm = (i, part, label) => set(({films}) => ({films: films.map((film, at) => at === i ? {...film, ...(typeof part === "function" ? part(film) : part)} : film)}), label && `film ${i} ${label}`);
    const setMenus = (part, label) => set(({menus}) => ({menus: {...menus, ...part}}), label && `menus ${label}`);
    let known = null, chosen = 0, about = null, aboutOf = "", timer = 0;

    // The chosen film and its chapters.
    const stage = new Stage("A frame of the chosen film", () => draw());
    const frame = new Latest(async (request, signal) => { const picture = await bitmap("api/still", request, signal); if (timeline.playing) return picture.close(); stage.show(picture); });
    const film = () => project()?.films?.[chosen];
    const source = () => film() && resolve(base(), film().path ?? film().pictures?.[0] ?? "");
    const body = () => ({path: source(), effects: [], width: stage.need().width ?? 960});
    const timeline = new Timeline({label: "Time in the film", seek: () => draw(), draw: picture => stage.show(picture),
        stream: from => ["api/stream", {...body(), view: `${page}/disc/play`, width: 640, from, to: about.seconds}]});
    function draw() { if (about && !timeline.playing) frame.ask({...body(), view: `${page}/disc/main`, at: timeline.at}); }
    async function look() {
        const path = source();
        if (aboutOf === path) return mark();
        aboutOf = path;
        about = null;
        try { const facts_ = path && /\.\w+$/.test(path) ? await facts(path) : null; if (aboutOf === path) about = facts_; } catch (error) { report(error); }
        timeline.node.hidden = about?.kind !== "film" || store.get().panel === "menus";
        stage.setEmpty(about ? "" : film() ? "A slideshow of the pictures of a folder." : project() ? "Choose a film." : "Begin with the films and photographs of this folder.");
        if (!about) return;
        stage.setSource(about.width, about.height);
        timeline.at = 0;
        if (about.kind === "film") timeline.setLength(about.seconds, about.rate[0] / about.rate[1]);
        mark();
        draw();
    }
    function mark() {
        if (about?.kind === "film") timeline.setMarks((film()?.chapters ?? []).map((chapter, i) => ({begin: beginOf(chapter), end: beginOf(chapter), kind: "chapter",
            label: `Chapter ${i + 1}`, move: at => setChapter(chosen, i, {begin: Number(round(at, 2))}), remove: () => removeChapter(chosen, i)})));
    }
    const sorted = chapters => [...chapters].sort((a, b) => beginOf(a) - beginOf(b));
    const setChapter = (i, at, part) => setFilm(i, ({chapters}) => ({chapters: sorted(chapters.map((chapter, index) => index === at ? {begin: beginOf(chapter), ...(typeof chapter === "object" && chapter), ...part} : chapter))}));
    const removeChapter = (i, at) => setFilm(i, ({chapters}) => ({chapters: chapters.filter((_, index) => index !== at)}));
    const addChapter = button("Chapter here", () => {
        const at = Number(round(timeline.at, 2));
        setFilm(chosen, ({chapters = []}) => ({chapters: sorted([...chapters.filter(chapter => beginOf(chapter) !== at), at])}));
    }, {class: "compact", "aria-label": "Chapter here", title: "A chapter begins at this time"}, "plus");
    timeline.node.append(addChapter);

    // The films in their order.
    const list = el("ol", {class: "chain", "aria-label": "Films, in their order"});
    const take = entries => {
        const file = entries.find(({kind}) => kind === "project");
        if (file) return open(file.path);
        const films = entries.filter(({kind}) => kind === "film").map(({path}) => ({title: stem(path).replace(/[_-]+/g, " "), path: relative(base(), path)}));
        const pictures = entries.filter(({kind}) => kind === "picture").map(({path}) => relative(base(), path));
        if (pictures.length) films.push({title: "Photographs", pictures});
        if (!project()) store.change("disc", {project: {version: 1, title: "My disc", profile: "pal-16:9", films}});
        else set(now => ({films: [...(now.films ?? []), ...films]}));
        store.show({panel: "films"});
    };
    takesFiles(list, take);
    takesFiles(stage.node, take);
    const order = reorderable(list, (from, to) => { chosen = to; set(({films}) => ({films: moved(films, from, to)})); });
    function item({film: {path, pictures}, i}) {
        const now = () => project()?.films?.[i] ?? {}, node = el("li", {class: "entry", onfocusin: () => choose(i)});
        const title = el("input", {type: "text", "aria-label": `Title of film ${i + 1}`, oninput: () => setFilm(i, {title: title.value}, "title")});
        const chapters = el("ol", {"aria-label": "Chapters"}), room = el("small");
        node.append(el("div", {class: "row"}, order.grip(node), thumbBox(resolve(base(), path ?? pictures?.[0] ?? "")), title, iconButton("trash", `Remove film ${i + 1}`, () => { chosen = 0; set(({films}) => ({films: films.filter((_, at) => at !== i)})); })),
            el("div", {class: "inside"}, room, chapters));
        const chapterItem = ({at}) => {
            const one = () => (now().chapters ?? [])[at] ?? 0;
            const change = part => setChapter(i, at, part);
            const begin = el("input", {type: "number", min: 0, step: 0.04, "aria-label": `Begin of chapter ${at + 1}, in seconds`, onchange: () => change({begin: Number(begin.value)}), onfocus: () => { choose(i); timeline.set(beginOf(one())); }});
            const name = el("input", {type: "text", placeholder: `Chapter ${at + 1}`, "aria-label": `Title of chapter ${at + 1}`, onchange: () => change({title: name.value || undefined})});
            return {node: el("li", {class: "control"}, begin, name, iconButton("trash", `Remove chapter ${at + 1}`, () => removeChapter(i, at))), update() {
                if (document.activeElement !== begin) begin.value = round(beginOf(one()));
                if (document.activeElement !== name) name.value = one().title ?? "";
            }};
        };
        return {node, update() {
            node.classList.toggle("chosen", chosen === i);
            if (document.activeElement !== title) title.value = now().title ?? "";
            chapters.hidden = chosen !== i;
            keyed(chapters, chosen === i ? (now().chapters ?? []).map((_, at) => ({at})) : [], ({at}) => at, chapterItem);
            const planned = plan?.titles?.[i];
            room.textContent = planned ? `${clock(planned.seconds, 0)}, ${bytes(planned.bytes)}${planned.copied ? ", copied as it is" : ""}` : path ?? (pictures.length === 1 ? pictures[0] : `${pictures.length} pictures or folders`);
        }};
    }
    function choose(i) { if (chosen === i) return; chosen = i; timeline.stop(); lists(); look(); }
    const lists = () => keyed(list, (project()?.films ?? []).map((film_, i) => ({film: film_, i, key: `${film_.path ?? film_.pictures}|${i}`})), ({key}) => key, item);

    // A button of a menu leads to a film, or a chapter of one.
    const shownMenus = discMenus({disc: () => ({project: project(), file: doc().path}), async play({kind, film: i, chapter}) {
        store.show({panel: "films"});
        choose(i);
        await look();
        timeline.set(kind === "chapter" ? beginOf(film().chapters[chapter]) : 0);
        if (about?.kind === "film") timeline.start();
    }});

    // The room they take.
    let plan = null;
    const check = new Latest(async (request, signal) => {
        plan = await post("api/disc/check", request, {signal});
        faults.replaceChildren(...plan.faults.map(text => el("li", {text})));
        lists();
        space();
    });
    const bar = el("div", {class: "space-bar", role: "img"}), readout = el("p", {class: "muted"}), faults = el("ul", {class: "faults", role: "status"});
    function space() {
        if (!plan?.capacity) { bar.hidden = true; readout.textContent = ""; return; }
        const parts = [...(plan.titles ?? []), {title: "Menus", bytes: plan.menuBytes ?? 0}], used = plan.usedBytes ?? 0;
        bar.hidden = false;
        bar.classList.toggle("over", used > plan.capacity);
        bar.replaceChildren(...parts.map(({title, bytes: size}, i) => {
            const part = el("span", {title: `${title}: ${bytes(size)}`});
            part.style.width = `${size / Math.max(plan.capacity, used) * 100}%`;
            part.style.background = `hsl(${222 + i * 43} 55% 55%)`;
            return part;
        }));
        readout.textContent = `${bytes(used)} of ${bytes(plan.capacity)}${plan.videoRate ? `, films at ${Math.round(plan.videoRate)} kbit/s` : ""}`;
        bar.setAttribute("aria-label", readout.textContent);
    }

    async function survey() {
        try {
            const {project: made} = await post("api/disc/survey", {path: store.get().folder});
            store.change("disc", {project: made});
            store.show({panel: "films"});
        } catch (error) { report(error); }
    }
    async function open(path) {
        try {
            const read = await load(path);
            if (!Array.isArray(read.films)) throw new Error(`${path}: is no disc; a disc's file lists its films.`);
            store.change("disc", {project: read, path});
        } catch (error) { report(error); }
    }

    // The forms of the disc and its menus.
    const updates = [];
    const line = (label, parameter, get, put) => { const one = control(parameter, label, {get: () => String(get() ?? ""), set: put, size: () => stage.source, base}); updates.push(one.update); return one.node; };
    const words = values => ({kind: "word", words: values, name: "", meaning: ""});
    const file = (...kinds) => ({kind: "source", kinds, name: "", meaning: ""}), text = {kind: "text", name: "", meaning: ""}, toggle = {kind: "switch", name: "", meaning: ""}, colour = {kind: "colour", name: "colour", meaning: ""};
    const menus = () => project()?.menus ?? {}, part = kind => catalogue.templates.filter(name => name.startsWith(kind)), optional = value => value === "" ? undefined : value;
    const form = el("div", {}, el("h3", {text: "Disc"}), line("title", text, () => project()?.title, value => set({title: value})), line("for", words(["pal-16:9", "pal-4:3", "ntsc-16:9", "ntsc-4:3"]), () => project()?.profile, value => set({profile: value})),
        line("holds", words(["4.7", "8.5"]), () => project()?.gigabytes ?? 4.7, value => set({gigabytes: Number(value)})),
        el("h3", {text: "Menus"}), line("main", words(part("menu_")), () => menus().template, value => setMenus({template: value})), line("chapters", words(part("submenu_")), () => menus().chapterTemplate ?? "submenu_common", value => setMenus({chapterTemplate: value})),
        line("colours", words(["own", "light", "dark"]), () => menus().mood ?? "own", value => setMenus({mood: value === "own" ? undefined : value})), line("background", file("picture", "film"), () => menus().background, value => setMenus({background: optional(value)})), line("music", file("sound", "film"), () => menus().music, value => setMenus({music: optional(value)})),
        line("repeats after", {kind: "number", name: "seconds", meaning: "after which a menu starts over", sensible: {minimum: 5, maximum: 60}, step: 1, unit: "s"}, () => menus().seconds ?? 20, (value, name) => setMenus({seconds: Number(value)}, name)),
        line("play all", toggle, () => Number(menus().playAll ?? true), value => setMenus({playAll: value === "1"})), line("chapter menus", toggle, () => Number(menus().chapters ?? true), value => setMenus({chapters: value === "1"})),
        line("mark", words(["frame", "underline", "marker"]), () => menus().mark ?? "frame", value => setMenus({mark: value})), line("chosen", colour, () => menus().chosen ?? "#ffcc00", (value, name) => setMenus({chosen: value}, name && "chosen")),
        line("pressed", colour, () => menus().pressed ?? "#ffffff", (value, name) => setMenus({pressed: value}, name && "pressed")));
    const instructions = el("textarea", {rows: 3, onchange: () => setMenus({instructions: instructions.value.trim() ? instructions.value.trim().split("\n") : undefined})});
    form.append(field("Instructions, a page of lines", instructions));

    const save = () => saveFile(doc().path, JSON.stringify(project(), null, 2) + "\n");
    const output = values => ({kind: "disc", project: doc().path, format: values?.format ?? "dvd"});
    const make = async () => {
        if (!await save()) return;
        const format = el("select", {name: "format"}, el("option", {value: "dvd", text: "a video DVD, as an image (.iso)"}), el("option", {value: "web", text: "a folder for browsers"}));
        format.onchange = () => { const name = format.form.elements.output; name.value = name.value.replace(/(\.iso|_web)?$/, format.value === "dvd" ? ".iso" : "_web"); };
        render("Make the disc", `${stem(doc().path)}.iso`, output, [field("Kind", format)]);
    };
    const path = el("input", {type: "text", class: "path", "aria-label": "The project's file", spellcheck: "false", onchange: () => store.change("disc", {path: /\.json$/.test(path.value) ? path.value : path.value + ".json"})});
    const needs = [iconButton("copy", "Copy the command line", async () => { if (await save()) copyCommand({...output(), output: `${stem(doc().path)}.iso`}); }), button("Save", save, {}, "save"), button("Make", make, {class: "primary"}, "disc")];
    const begin = button("Survey this folder", survey, {}, "folder");

    return {
        kinds: ["film", "picture", "project"], many: true, take, current: () => doc().path,
        centre: el("div", {class: "centre"}, el("div", {class: "bar"}, path, ...needs), stage.node, timeline.node, shownMenus.centre),
        panels: [{id: "films", label: "Films", node: el("div", {class: "panel"}, begin, readout, bar, faults, list)}, {id: "disc", label: "Settings", node: el("div", {class: "panel"}, form)},
            {id: "menus", label: "Menus", node: shownMenus.panel}],
        key: event => (store.get().panel === "menus" ? shownMenus : timeline).key(event),
        leave: () => { timeline.stop(); shownMenus.stop(); },
        update(state) {
            const menusShown = state.panel === "menus";
            stage.node.hidden = menusShown;
            timeline.node.hidden = menusShown || about?.kind !== "film";
            if (menusShown) timeline.stop();
            shownMenus.update(menusShown);
            if (known === state.disc) return;
            known = state.disc;
            for (const one of needs) one.disabled = !project();
            form.inert = !project();
            if (document.activeElement !== path) path.value = doc().path;
            if (document.activeElement !== instructions) instructions.value = (menus().instructions ?? []).join("\n");
            for (const update of updates) update();
            lists();
            look();
            space();
            clearTimeout(timer);
            if (project()) timer = setTimeout(() => check.ask({project: project(), file: doc().path}), CHECK_MS);
        },
    };
}
