// The menus of a disc, as players show them, with a remote control that leads through them.
import {Latest, bitmap, page, post} from "./api.js";
import {button, el, svg} from "./dom.js";
import {buttonMarks, remoteControl} from "./remote.js";
import {Stage} from "./stage.js";
import {Timeline} from "./timeline.js";

const SETTLED = 1, NAMES = {main: "Main menu", choice: "Chapters", instructions: "Instructions"};

/** disc() is what the server is to read: {project, file}; play(target) shows a film or chapter that a button leads to. */
export function discMenus({disc, play}) {
    let pages = [], shown = 0, pressed = 0, known = null, seen = false;
    const stage = new Stage("The disc's menu", () => draw()), marks = svg("g", {});
    stage.overlay.prepend(marks);
    stage.marks.push(drawMarks);
    const wish = (view, more) => ({...disc(), view: `${page}/disc/menu-${view}`, page: shown + 1, ...more});
    const frame = new Latest(async (request, signal) => {
        const picture = await bitmap("api/disc/frame", request, signal);
        if (timeline.playing || request.page !== shown + 1) return picture.close();
        stage.setEmpty("");
        stage.show(picture);
        drawMarks();
        stage.node.dispatchEvent(new CustomEvent("shown"));
    });
    const timeline = new Timeline({label: "Time in the menu", seek: () => draw(), draw: picture => stage.show(picture),
        stream: from => ["api/disc/stream", wish("play", {width: Math.min(960, stage.need().width ?? 960), from: Math.round(from * timeline.rate), to: pages[shown]?.frames ?? 0})]});
    function draw() {
        if (seen && pages[shown] && !timeline.playing) frame.ask(wish("main", {width: Math.max(160, stage.need().width ?? 960), frame: Math.round(timeline.at * timeline.rate)}));
    }
    function drawMarks() { if (stage.empty.textContent) return marks.replaceChildren(); marks.replaceChildren(...buttonMarks(stage, (pages[shown]?.buttons ?? []).map(({box}) => box), pressed)); }
    const check = new Latest(async (request, signal) => {
        const reply = await post("api/disc/pages", request, {signal});
        pages = reply.pages;
        faults.replaceChildren(...reply.faults.map(text => el("li", {text})));
        chips.replaceChildren(...pages.map((one, i) => button(nameOf(one), () => show(i), {class: "chip"})));
        if (!pages.length) stage.setEmpty("The menus show as soon as nothing is wrong with the disc.");
        show(Math.min(shown, Math.max(0, pages.length - 1)));
    });
    const nameOf = ({name, film}) => {
        const [, word, number] = /^([a-z]+)(?:\d+-)?(\d*)$/.exec(name) ?? [null, name, ""];
        return `${film >= 0 ? `Chapters: ${disc().project.films[film].title ?? film + 1}` : NAMES[word] ?? name}${number ? ` (${number})` : ""}`;
    };
    function show(i) {
        shown = i;
        pressed = 0;
        const now = pages[i];
        chips.childNodes.forEach((chip, at) => chip.setAttribute("aria-pressed", at === i));
        timeline.stop();
        timeline.node.hidden = !now;
        if (!now) return;
        const rate = now.rate[0] / now.rate[1];
        stage.setEmpty("The page is rendered ...");
        timeline.loop = now.loopStart / rate;
        // What comes in then is there.
        timeline.at = timeline.loop + SETTLED;
        stage.setSource(now.width, now.height);
        timeline.setLength(now.frames / rate, rate);
        timeline.setMarks([{begin: timeline.loop, end: timeline.seconds, kind: "part"}]);
        say();
        draw();
    }
    function say() {
        const {buttons} = pages[shown] ?? {buttons: []};
        heard.textContent = buttons.length ? `Button ${pressed + 1} of ${buttons.length}: ${buttons[pressed].text}` : "";
        drawMarks();
    }
    const {node, heard} = remoteControl({
        go: to => { pressed = pages[shown]?.buttons[pressed]?.[to] ?? 0; say(); },
        ok: () => {
            const to = pages[shown]?.buttons[pressed]?.to;
            if (to?.kind === "page") show(to.page - 1); else if (to) play(to);
        },
        back: () => show(0),
    });
    const chips = el("div", {class: "chips", role: "group", "aria-label": "Pages"}), faults = el("ul", {class: "faults", role: "status"});
    return {
        centre: [stage.node, timeline.node], panel: el("div", {class: "panel"}, el("h3", {text: "Pages"}), chips, faults, node, heard), key: event => timeline.key(event),
        stop: () => timeline.stop(),
        /** Shows or hides the menus; reads them again when the disc has changed. */
        update(visible) {
            seen = visible;
            for (const one of [stage.node, timeline.node]) one.hidden = !visible;
            if (!visible) return timeline.stop();
            const {project} = disc();
            timeline.node.hidden = !pages.length;
            if (!project) stage.setEmpty("Begin with the films and photographs of this folder.");
            if (!project || project === known) return;
            known = project;
            if (!pages.length) stage.setEmpty("The menus are laid out ...");
            check.ask(disc());
        },
    };
}
