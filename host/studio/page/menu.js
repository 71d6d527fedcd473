// A disc menu: its template, pictures, texts and buttons, and how it looks and works.
import {Latest, bitmap, load, page, post, report} from "./api.js";
import {announce, button, clamp, el, field, fileName, folderOf, iconButton, keyed, moved, relative, reorderable, resolve, round, roving, svg} from "./dom.js";
import {control} from "./forms.js";
import {Handles} from "./handles.js";
import {filesOfKinds, filmTile, restButton, takesFiles, thumbBox} from "./library.js";
import {copyCommand, render, saveFile} from "./queue.js";
import {buttonMarks, remoteControl} from "./remote.js";
import {Stage} from "./stage.js";
import * as store from "./store.js";
import {Timeline} from "./timeline.js";

const STYLES = {name: "fontstyle", kind: "word", words: ["bold", "italic", "underline", "outline", "shadow", "halo", "plate"], separator: " ", meaning: "how the letters are drawn"};
const FACES = ["Cabin", "Comfortaa", "Dancing Script", "EB Garamond", "Goudy Bookletter 1911", "League Spartan", "Quicksand", "Yanone Kaffeesatz", "DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono", "Sans", "Serif"];
const number = (name, low, high, step, unit, meaning) => ({name, kind: "number", sensible: {minimum: low, maximum: high}, step, unit, meaning});
const SIZE = number("size", 8, 200, 1, "px", "height of the letters"), SECONDS = number("duration", 1, 60, 0.5, "s", "length of the menu"),
    LOOP = number("loopStart", 0, 30, 0.5, "s", "seconds that lead to the part that players repeat"), ACROSS = number("x", 0, 1920, 1, "px", "left edge"), DOWN = number("y", 0, 1080, 1, "px", "upper edge"),
    COLOUR = {name: "color", kind: "colour", meaning: "colour of the letters"}, SPACING = number("spacing", -100, 300, 5, "‰", "room between the letters, of their size"),
    ALIGN = {name: "align", kind: "word", words: ["left", "center", "right"], meaning: "where the text stands in its box, or about its left edge"};
const TILE_FRAMES = 150;
// What belongs to a place in the template and stays there when pictures are ordered anew.
const PLACES = ["additionSourceSizes", "maskPaths", "startPositions", "endPositions", "moveFormulas", "moveSpeeds", "startTrans", "endTrans", "fadeSpeeds"];

export function menuJob(job, catalogue) {
    const doc = () => store.get().menu, project = () => doc().project;
    const setProject = (part, label) => store.change("menu", now => ({project: {...now.project, ...(typeof part === "function" ? part(now.project) : part)}}), label);
    const base = () => folderOf(doc().path);
    const menu = () => ({template: doc().template, project: project(), file: doc().path});
    let checked = null, opened = null, pressed = 0, known = null, shownPage = 1;

    const stage = new Stage("The menu", () => draw());
    const handles = new Handles(stage), marks = svg("g", {});
    stage.overlay.prepend(marks);
    stage.marks.push(drawMarks);
    const frame = new Latest(async (request, signal) => {
        const picture = await bitmap("api/menu/frame", request, signal);
        if (timeline.playing) return picture.close();
        stage.show(picture);
        stage.node.dispatchEvent(new CustomEvent("shown"));
    });
    const check = new Latest(async (request, signal) => {
        const reply = await post("api/menu/check", request, {signal});
        faults.replaceChildren(...reply.faults.map(text => el("li", {text})));
        if (!reply.width) return;
        checked = reply;
        stage.setSource(reply.width, reply.height);
        timeline.loop = reply.loopStart / (reply.rate[0] / reply.rate[1]);
        timeline.setLength(reply.frames / (reply.rate[0] / reply.rate[1]), reply.rate[0] / reply.rate[1]);
        timeline.setMarks([{begin: timeline.loop, end: timeline.seconds, kind: "part"}]);
        shownPage = clamp(shownPage, 1, reply.pages ?? 1);
        pager.hidden = (reply.pages ?? 1) < 2;
        pager.firstChild.textContent = `Page ${shownPage} of ${reply.pages}`;
        showHandles();
        drawMarks();
        draw();
    });
    const width = () => Math.max(160, stage.need().width ?? 960);
    const timeline = new Timeline({label: "Time in the menu", seek: () => draw(),
        stream: from => ["api/menu/stream", {...menu(), view: `${page}/menu/play`, page: shownPage, width: Math.min(960, width()), from: Math.round(from * timeline.rate), to: checked?.frames ?? 0}],
        draw: picture => stage.show(picture)});
    timeline.at = 5;
    function draw() {
        if (!project() || !checked || timeline.playing) return;
        frame.ask({...menu(), view: `${page}/menu/main`, page: shownPage, width: width(), frame: Math.round(timeline.at * timeline.rate)});
    }
    const pager = el("div", {class: "row", hidden: true}, el("span", {class: "muted"}), iconButton("left", "Page before", () => turn(-1)), iconButton("right", "Next page", () => turn(1)));
    function turn(by) { shownPage = clamp(shownPage + by, 1, checked.pages); pressed = 0; check.ask(menu()); }

    // On the picture: texts and resting pictures are dragged, safe areas and buttons shown.
    const onPage = list => (list ?? []).filter(one => (one.page ?? 1) === shownPage);
    function showHandles() {
        if (!checked || !project()) return handles.show([]);
        const {width: W, height: H} = checked, shapes = [];
        (project().textInfos ?? []).forEach((text, i) => {
            // An aligned text stands anywhere in its box.
            const box = text.align && text.box?.length > 2 ? text.box : checked.texts?.find(one => one.index === i)?.box ?? [0, 0, W / 4, H / 12];
            const at = () => { const now = project().textInfos?.[i] ?? text; return now.move?.end ?? now.box ?? box; };
            shapes.push({kind: "box", fixed: true, name: text.text, get: part => part === "x" ? at()[0] / W : part === "y" ? at()[1] / H : part === "w" ? box[2] / W : box[3] / H,
                set: ({x, y}) => setText(i, now => { const place = [Math.round(x * W), Math.round(y * H)]; return now.move?.end ? {move: {...now.move, end: place}} : {box: [...place, ...(now.box ?? []).slice(2)]}; }, "place"),
                choose: () => { opened = i; lists(); }});
        });
        const key = project().endPositions ? "endPositions" : "startPositions";
        for (const {index, box, rests} of onPage(checked.pictures).filter(one => one.rests && (project()[key] || one.rests))) {
            const at = () => project()[key]?.[index] ?? box;
            shapes.push({kind: "box", fixed: true, name: `picture ${index + 1}`, get: part => part === "x" ? at()[0] / W : part === "y" ? at()[1] / H : part === "w" ? box[2] / W : box[3] / H,
                set: ({x, y}) => setProject(now => {
                    const places = now[key] ?? (now.additionSourcePaths ?? []).map((_, i) => (checked.pictures.find(one => one.index === i)?.box ?? [0, 0]).slice(0, 2).map(Math.round));
                    return {[key]: places.map((place, i) => i === index ? [Math.round(x * W), Math.round(y * H)] : place)};
                }, `picture ${index}`)});
        }
        handles.show(shapes);
    }
    function drawMarks() {
        const box = stage.box(), nodes = [];
        const rect = (x, y, w, h, name) => svg("rect", {class: name, x: box.x + x * box.w, y: box.y + y * box.h, width: w * box.w, height: h * box.h, rx: 3});
        if (checked && safe.getAttribute("aria-pressed") === "true") nodes.push(rect(0.05, 0.05, 0.9, 0.9, "safe"), rect(0.1, 0.1, 0.8, 0.8, "safe"));
        const shares = ({box: [x, y, w, h]}) => [x / checked.width, y / checked.height, w / checked.width, h / checked.height];
        if (checked) nodes.push(...buttonMarks(stage, onPage(checked.buttons).map(shares), pressed));
        marks.replaceChildren(...nodes);
    }

    // The remote control moves as players do: to the nearest button in a direction.
    const STEPS = {up: [0, -1], down: [0, 1], left: [-1, 0], right: [1, 0]};
    function go(to) {
        const [dx, dy] = STEPS[to], buttons = onPage(checked?.buttons), centre = ({box: [x, y, w, h]}) => [x + w / 2, y + h / 2];
        if (!buttons.length) return heard.textContent = "This menu has no buttons.";
        const [x, y] = centre(buttons[pressed] ?? buttons[0]);
        let best = null, least = Infinity;
        buttons.forEach((other, i) => {
            const [ox, oy] = centre(other), along = (ox - x) * dx + (oy - y) * dy, aside = Math.abs((ox - x) * dy) + Math.abs((oy - y) * dx);
            if (i !== pressed && along > 1 && along + 2 * aside < least) { least = along + 2 * aside; best = i; }
        });
        if (best !== null) pressed = best;
        say();
    }
    function say() {
        const buttons = onPage(checked?.buttons);
        heard.textContent = `Button ${pressed + 1} of ${buttons.length}${buttons[pressed]?.text ? ": " + buttons[pressed].text : ""}`;
        drawMarks();
    }
    const {node: remote, heard} = remoteControl({go,
        ok: () => { const one = onPage(checked?.buttons)[pressed]; heard.textContent = one ? `Plays ${one.text || `film ${pressed + 1}`}.` : "This menu has no buttons."; },
        back: () => { pressed = 0; say(); }});

    // What is on the menu.
    const paths = () => (project()?.additionSourcePaths ?? []);
    const setPictures = list => setProject(now => {
        const part = {additionSourcePaths: list};
        if (now.isAdditionSourceImages) part.isAdditionSourceImages = undefined;
        if (now.captions) part.captions = list.map(path => now.captions[now.additionSourcePaths.indexOf(path)] ?? "");
        for (const key of PLACES) if (now[key]) part[key] = list.map((_, i) => now[key][Math.min(i, now[key].length - 1)]);
        return part;
    });
    async function take(entries) {
        const projectFile = entries.find(({kind}) => kind === "project");
        if (projectFile) return open(projectFile.path);
        const added = entries.filter(({kind}) => kind === "picture" || kind === "film").map(({path}) => relative(base(), path));
        if (!project()) return choose("menu_travel", added.map(path => resolve(base(), path)));
        setPictures([...paths(), ...added]);
        store.show({panel: "content"});
    }
    async function open(path) {
        try {
            const read_ = await load(path);
            if (!read_.template) throw new Error(`${path}: is no menu; a menu's file names its template.`);
            store.change("menu", {template: read_.template, project: read_, path});
        } catch (error) { report(error); }
    }
    async function choose(template, pictures) {
        try {
            const title = project()?.textInfos?.[0]?.text ?? (store.get().folder ? fileName(store.get().folder) : "My films");
            const {project: made} = await post("api/menu/new", {template, pictures: pictures ?? await ownPictures(), title, file: doc().path});
            store.change("menu", {template, project: {...made, template}});
        } catch (error) { report(error); }
    }
    async function ownPictures() {
        if (paths().length) return paths().map(path => resolve(base(), path));
        return (await filesOfKinds(["picture"])).slice(0, 6);
    }

    const pictureList = el("ol", {class: "chain", "aria-label": "Pictures and films, in their order"});
    takesFiles(pictureList, take);
    takesFiles(stage.node, take);
    const pictureOrder = reorderable(pictureList, (from, to) => setPictures(moved(paths(), from, to)));
    const pictureItem = ({path}) => {
        const node = el("li", {class: "entry"});
        let at = 0;
        node.append(el("div", {class: "row"}, pictureOrder.grip(node), thumbBox(resolve(base(), path)), el("span", {class: "title row", title: path, text: fileName(path)}),
            iconButton("trash", `Remove ${fileName(path)}`, () => setPictures(paths().filter((_, i) => i !== at)))));
        return {node, update(_, index) { at = index; }};
    };
    const setText = (i, part, label) => setProject(now => ({textInfos: now.textInfos.map((text, at) => at === i ? {...text, ...(typeof part === "function" ? part(text) : part)} : text)}), label && `text ${i} ${label}`);
    const textList = el("ol", {class: "chain", "aria-label": "Texts"});
    const textOrder = reorderable(textList, (from, to) => { opened = null; setProject(now => ({textInfos: moved(now.textInfos, from, to)})); });
    function textItem({i}) {
        const text = () => project()?.textInfos?.[i] ?? {text: "", box: [0, 0]}, context = (get, set) => ({get, set, size: () => stage.source});
        const words = el("input", {type: "text", "aria-label": `Text ${i + 1}`, oninput: () => setText(i, {text: words.value}, "words")});
        const face = el("input", {type: "text", list: "faces", "aria-label": `Font of text ${i + 1}`, onchange: () => setText(i, {face: face.value || undefined})});
        const at = part => (text().move?.end ?? text().box ?? [0, 0])[part];
        const setAt = (part, value) => setText(i, now => { const next = [...(now.move?.end ?? now.box ?? [0, 0])]; next[part] = Number(value); return now.move?.end ? {move: {...now.move, end: next}} : {box: next}; }, `at ${part}`);
        const controls = [control(SIZE, "size", context(() => String(text().size ?? 32), value => setText(i, {size: Number(value)}, "size"))),
            control(STYLES, "style", context(() => text().fontstyle ?? "", value => setText(i, {fontstyle: value}))),
            control(SPACING, "spacing", context(() => String(text().spacing ?? 0), value => setText(i, {spacing: Number(value)}, "spacing"))),
            control(ALIGN, "align", context(() => text().align ?? "left", value => setText(i, {align: value}))),
            control(COLOUR, "colour", context(() => text().color ?? "#ffffff", value => setText(i, {color: value}, "colour"))),
            control(ACROSS, "across", context(() => String(at(0)), value => setAt(0, value))), control(DOWN, "down", context(() => String(at(1)), value => setAt(1, value)))];
        const inside = el("div", {class: "inside"}, el("div", {class: "control"}, el("span", {class: "label", text: "font"}), face), controls.map(one => one.node));
        const head = iconButton("down", `Text ${i + 1}: font, colour, place`, () => { opened = opened === i ? null : i; lists(); }, {"aria-expanded": "false"}), node = el("li", {class: "entry"});
        node.append(el("div", {class: "row"}, textOrder.grip(node), words, head, iconButton("trash", "Remove the text", () => { opened = null; setProject(now => ({textInfos: now.textInfos.filter((_, at_) => at_ !== i)})); })), inside);
        return {node, update() {
            inside.hidden = opened !== i;
            head.setAttribute("aria-expanded", opened === i);
            if (document.activeElement !== words) words.value = text().text;
            if (document.activeElement !== face) face.value = text().face ?? "";
            for (const one of controls) one.update();
        }};
    }
    const addText = button("Add a text", () => {
        opened = (project().textInfos ?? []).length;
        setProject(now => ({textInfos: [...(now.textInfos ?? []), {text: "New text", size: 40, color: "#ffffff", fontstyle: "bold shadow", box: [Math.round((checked?.width ?? 1280) * 0.1), Math.round((checked?.height ?? 720) * 0.45)]}]}));
    }, {class: "quiet"}, "plus");
    const lines = el("textarea", {rows: 3, "aria-label": "Buttons, one a line", onchange: () => setProject({buttons: lines.value.trim() ? lines.value.trim().split("\n") : undefined})});
    const background = control({kind: "source", kinds: ["picture", "film"], name: "sourcePath", meaning: "a picture or film behind the others"}, "background",
        {base, get: () => project()?.sourcePath ?? "", set: value => setProject({sourcePath: value || undefined})});
    // Texts take their colours from the mood, too.
    const mood = el("select", {onchange: () => setProject(now => ({mood: mood.value === "own" ? undefined : mood.value, textInfos: now.textInfos?.map(({color: _, ...text}) => text)}))}, ["own", "light", "dark"].map(value => el("option", {value, text: value})));
    const profile = el("select", {onchange: () => setProject({profile: profile.value || undefined})}, el("option", {value: "", text: "as the template has it"}), catalogue.profiles.map(({name}) => el("option", {value: name, text: name})));
    const times = [[SECONDS, "length", 10], [LOOP, "loop begins", 0]].map(([parameter, label, start]) => control(parameter, label, {size: () => stage.source,
        get: () => String(project()?.[parameter.name] ?? start), set: (value, name) => setProject({[parameter.name]: Number(value)}, name)}));
    function lists() {
        keyed(pictureList, paths().map((path, i) => ({path, key: `${path}|${paths().slice(0, i).filter(other => other === path).length}`})), ({key}) => key, pictureItem);
        keyed(textList, (project()?.textInfos ?? []).map((_, i) => ({i})), ({i}) => i, textItem);
        if (document.activeElement !== lines) lines.value = (project()?.buttons ?? []).join("\n");
        background.update();
        profile.value = project()?.profile ?? "";
        mood.value = project()?.mood ?? "own";
        for (const one of times) one.update();
    }

    // Templates, each made of one's own pictures.
    const gallery = el("div", {class: "gallery tiles wide", role: "group", "aria-label": "Templates with your pictures"});
    const stop = roving(gallery, ".tile");
    let madeOf = null;
    const tiles = catalogue.templates.map(name => {
        const one = filmTile(name.replace(/_/g, " "), catalogue.effects.find(effect => effect.name === name)?.summary ?? "", () => choose(name));
        gallery.append(one.node);
        return {name, ...one};
    });
    stop();
    async function refreshTiles() {
        const pictures = (await ownPictures().catch(() => [])).slice(0, 8), key = pictures.join("|");
        if (key === madeOf) return;
        madeOf = key;
        for (const {name, show} of tiles) show(async signal => {
            const {project: made} = await post("api/menu/new", {template: name, pictures, title: "Summer", file: "menu.json"}, {signal});
            return ["api/menu/stream", {template: name, project: made, file: "menu.json", view: `${page}/menu/tile-${name}`, width: 240, from: 0, to: TILE_FRAMES}];
        });
    }

    const save = () => saveFile(doc().path, JSON.stringify(project(), null, 2) + "\n");
    const film = () => ({kind: "menu", template: doc().template, project: doc().path});
    const safe = iconButton("fit", "Safe areas: what every screen shows", () => { safe.setAttribute("aria-pressed", safe.getAttribute("aria-pressed") !== "true"); drawMarks(); }, {"aria-pressed": "false"});
    const title = el("input", {type: "text", class: "path", "aria-label": "The project's file", spellcheck: "false", onchange: () => store.change("menu", {path: /\.json$/.test(title.value) ? title.value : title.value + ".json"})});
    const needs = [safe, iconButton("copy", "Copy the command line", async () => { if (await save()) copyCommand({...film(), output: doc().path.replace(/json$/, "mp4")}); }),
        button("Save", save, {}, "save"), button("Render", async () => { if (await save()) render("Render the menu", doc().path.replace(/json$/, "mp4"), film); }, {class: "primary"}, "film")];
    const faults = el("ul", {class: "faults", "aria-label": "Faults", role: "status"});
    const content = el("div", {class: "panel"}, faults, el("h3", {text: "Pictures and films"}), pictureList, el("h3", {text: "Texts"}), textList, addText, el("h3", {text: "Buttons, one a line"}), lines,
        el("h3", {text: "The menu"}), background.node, field("Colours", mood), field("Made for", profile), times.map(one => one.node), el("datalist", {id: "faces"}, FACES.map(value => el("option", {value}))));
    stage.setEmpty("Choose a template.");

    return {
        kinds: ["picture", "film", "project"], many: true, take, current: () => doc().path,
        centre: el("div", {class: "centre"}, el("div", {class: "bar"}, title, pager, ...needs), stage.node, timeline.node),
        panels: [{id: "templates", label: "Templates", node: el("div", {class: "panel"}, el("div", {class: "row heading"}, el("h3", {text: "With your own pictures"}), restButton()), gallery)}, {id: "content", label: "Content", node: content},
            {id: "remote", label: "Remote", node: el("div", {class: "panel"}, remote, heard)}],
        key: event => timeline.key(event),
        leave: () => timeline.stop(),
        update(state) {
            if (state.panel === "templates") refreshTiles();
            if (known === state.menu) return;
            known = state.menu;
            stage.setEmpty(project() ? "" : "Choose a template.");
            for (const one of needs) one.disabled = !project();
            timeline.node.hidden = !project();
            addText.disabled = !project();
            if (document.activeElement !== title) title.value = doc().path;
            for (const one of tiles) one.node.setAttribute("aria-pressed", one.name === doc().template);
            lists();
            handles.update();
            if (project()) { timeline.stop(); check.ask(menu()); }
        },
    };
}
