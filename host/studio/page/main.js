// The page as a whole: its head, the files, the job that is worked on, and the keys that work everywhere.
import {read, report} from "./api.js";
import {el, iconButton, icon, roving} from "./dom.js";
import {discJob} from "./disc.js";
import {effectsJob} from "./effects.js";
import {Library} from "./library.js";
import {menuJob} from "./menu.js";
import {opener, panel as queue} from "./queue.js";
import {slideshowJob} from "./slideshow.js";
import * as store from "./store.js";

const JOBS = [["picture", "Picture", effectsJob], ["film", "Film", effectsJob], ["menu", "Menu", menuJob], ["slideshow", "Slideshow", slideshowJob], ["disc", "Disc", discJob]];
const THEMES = ["auto", "light", "dark"];
const jobs = {};
let catalogue = null, library = null, shown = null;

const head = document.getElementById("head"), work = document.getElementById("work"), panelTabs = document.getElementById("panels");
const undo = iconButton("undo", "Undo (Ctrl+Z)", store.undo), redo = iconButton("redo", "Redo (Ctrl+Shift+Z)", store.redo);
const theme = iconButton("theme", "Light or dark", () => { localStorage.theme = THEMES[(THEMES.indexOf(localStorage.theme ?? "auto") + 1) % 3]; applyTheme(); });
const tabs = JOBS.map(([id, label]) => el("button", {type: "button", role: "tab", id: `job-${id}`, "aria-label": label, title: label, "aria-controls": "work", onclick: () => store.show({job: id})}, icon(id), el("span", {text: label})));
const tabList = el("div", {class: "jobs-tabs", role: "tablist", "aria-label": "What to make"}, tabs);
roving(tabList, "[role=tab]");
head.append(el("h1", {}, el("img", {src: "icon.svg", alt: "", width: 24, height: 24}), el("span", {text: "Nifikral Studio"})), tabList, el("div", {class: "row tools-row"}, undo, redo, theme, opener));
document.body.append(queue);

function applyTheme() {
    const chosen = localStorage.theme ?? "auto";
    document.documentElement.dataset.theme = chosen;
    theme.setAttribute("aria-label", `Light or dark: ${chosen}`);
    theme.title = `Light or dark: ${chosen}`;
}

function panelButton(id, label) {
    return el("button", {type: "button", role: "tab", id: `panel-tab-${id}`, "aria-controls": `panel-${id}`, onclick: () => store.show({panel: id})}, el("span", {text: label}));
}

/** Puts a job onto the page. */
function present(id) {
    shown?.leave?.();
    const job = shown = jobs[id] ??= JOBS.find(([name]) => name === id)[2](id, catalogue);
    const sides = job.panels.map(({id: name, node}) => Object.assign(node, {id: `panel-${name}`}));
    for (const node of sides) { node.setAttribute("role", "tabpanel"); node.setAttribute("aria-labelledby", `panel-tab-${node.id.slice(6)}`); }
    library.node.id = "panel-files";
    panelTabs.replaceChildren(el("div", {class: "panel-tabs", role: "tablist", "aria-label": "Panels"}, panelButton("files", "Files"), ...job.panels.map(({id: name, label}) => panelButton(name, label))));
    roving(panelTabs.firstChild, "[role=tab]");
    work.replaceChildren(library.node, job.centre, ...sides);
    work.setAttribute("aria-labelledby", `job-${id}`);
    library.show(job);
    document.title = `${JOBS.find(([name]) => name === id)[1]} – Nifikral Studio`;
}

let was = null;
function update(state) {
    if (was?.job !== state.job) {
        // The panel that was open belongs to another job.
        was = state;
        present(state.job);
    }
    was = state;
    JOBS.forEach(([id], i) => { tabs[i].setAttribute("aria-selected", id === state.job); tabs[i].tabIndex = id === state.job ? 0 : -1; });
    const names = ["files", ...shown.panels.map(({id}) => id)], open = names.includes(state.panel) ? state.panel : names[1];
    document.body.dataset.panel = open === "files" ? "files" : "side";
    // On a wide page the files always show, and beside them the panel that was open last.
    const side = open === "files" ? shown.side ?? names[1] : shown.side = open;
    for (const {id, node} of shown.panels) node.hidden = id !== side;
    for (const tab of panelTabs.querySelectorAll("[role=tab]")) {
        const id = tab.id.slice("panel-tab-".length), selected = id === open;
        tab.setAttribute("aria-selected", selected);
        tab.classList.toggle("beside", open === "files" && id === side);
        tab.tabIndex = selected ? 0 : -1;
    }
    shown.update({...state, panel: open});
    undo.disabled = !store.canUndo();
    redo.disabled = !store.canRedo();
    library.mark(shown.current?.());
}

addEventListener("keydown", event => {
    const typing = event.target.matches?.("input:not([type=range]):not([type=checkbox]), textarea, select");
    const command = event.ctrlKey || event.metaKey;
    if (command && event.key.toLowerCase() === "z" && !typing) { event.shiftKey ? store.redo() : store.undo(); event.preventDefault(); }
    else if (command && event.key.toLowerCase() === "y" && !typing) { store.redo(); event.preventDefault(); }
    else if (event.altKey && /^[1-5]$/.test(event.key)) { store.show({job: JOBS[event.key - 1][0]}); event.preventDefault(); }
    else if (!command && !event.altKey && !typing && !event.target.closest?.("dialog, button, [role=option]") && shown?.key?.(event)) event.preventDefault();
});
addEventListener("dragover", event => event.preventDefault());
addEventListener("drop", event => event.preventDefault());

applyTheme();
try {
    [catalogue] = await Promise.all([read("api/catalogue"), store.restore()]);
    library = new Library();
    store.subscribe(update);
    update(store.get());
    library.reload();
} catch (error) { report(error); }
document.documentElement.dataset.ready = "yes";
