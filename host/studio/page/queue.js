// The queue of renderings: what waits, runs and is done, with progress, time left and cancel; and how one is started.
import {call, listen, load, post, report, store} from "./api.js";
import {announce, ask, clock, el, field, iconButton, keyed, notice} from "./dom.js";

const list = el("ul", {class: "jobs"}), states = new Map();
const hint = el("p", {class: "hint", text: "Nothing is being made. What you save or render is listed here."});
export const panel = el("aside", {class: "queue", hidden: true, "aria-label": "Queue"}, el("div", {class: "row"}, el("h2", {text: "Queue"}),
    iconButton("close", "Close the queue", () => toggle(false))), hint, list);
export const opener = iconButton("queue", "Queue", () => toggle(panel.hidden), {class: "icon-button opener", "aria-expanded": "false"});
const count = el("span", {class: "count", hidden: true});
opener.append(count);
addEventListener("keydown", event => { if (event.key === "Escape" && !panel.hidden && !document.querySelector("dialog")) toggle(false); });

function toggle(open) { panel.hidden = !open; opener.setAttribute("aria-expanded", open); if (open) panel.querySelector("button").focus(); else opener.focus(); }

function item(job) {
    const bar = el("progress", {max: 1, "aria-label": `Progress of ${job.title}`}), state = el("span", {class: "muted"});
    const cancel = iconButton("close", "Cancel", () => call("DELETE", `api/jobs/${job.id}`).catch(report));
    const node = el("li", {}, el("div", {class: "row"}, el("strong", {text: job.output || job.title}), cancel), bar, state);
    return {node, update(now) {
        const running = now.state === "running" || now.state === "waiting";
        node.className = now.state;
        bar.hidden = !running;
        if (now.fraction === null || now.state === "waiting") bar.removeAttribute("value"); else bar.value = now.fraction;
        const left = now.secondsLeft === null || now.secondsLeft === undefined ? "" : `, ${clock(Math.ceil(now.secondsLeft), 0)} left`;
        state.textContent = now.state === "running" ? `${Math.round((now.fraction ?? 0) * 100)} %${left}` : now.message ? `${now.state}: ${now.message}` : now.state;
        cancel.setAttribute("aria-label", running ? `Cancel ${now.output}` : `Remove ${now.output} from the list`);
    }};
}

listen("jobs", ({jobs}) => {
    keyed(list, [...jobs].reverse(), job => job.id, item);
    const open = jobs.filter(({state}) => state === "running" || state === "waiting").length;
    hint.hidden = jobs.length > 0;
    count.hidden = !open;
    count.textContent = open;
    opener.setAttribute("aria-label", open ? `Queue, ${open} to do` : "Queue");
    for (const job of jobs) {
        const before = states.get(job.id);
        if (before && before !== job.state && job.state === "done") notice(`${job.output} is written.`);
        if (before && before !== job.state && job.state === "failed") notice(job.message || `${job.output} failed.`, true);
        states.set(job.id, job.state);
    }
});

/** Asks for the output's name, then makes it. `also` are further fields of the dialogue; job(values) completes the job. */
export async function render(title, name, job, also = []) {
    const values = await ask(title, [field("File", el("input", {type: "text", name: "output", value: name, required: true, spellcheck: "false"}), "in the studio's folder"), ...also,
        el("label", {class: "row"}, el("input", {type: "checkbox", name: "overwrite"}), el("span", {text: "Overwrite what is there"}))], "Make it");
    if (!values?.output) return;
    try {
        const {id} = await post("api/jobs", {...await job(values), output: values.output, overwrite: values.overwrite === "on"});
        if (!states.has(id)) states.set(id, "waiting");
        announce(`${values.output} is in the queue`);
    } catch (error) { report(error); }
}

/** Copies the command line that makes the same bytes. */
export async function copyCommand(job) {
    try {
        const {line, files = []} = await post("api/command", job);
        // A list that the command reads.
        for (const {path, text} of files) if (!await saveFile(path, text)) return;
        const copied = await navigator.clipboard.writeText(line).then(() => true, () => false);
        notice(copied ? "The command line is copied." : "The command line:", false, el("code", {text: line}));
    } catch (error) { report(error); }
}

/** Writes a file; asks first where one is there that this page has not read, or that changed meanwhile. Returns whether it is written. */
export async function saveFile(path, text) {
    try {
        await store(path, text);
    } catch (error) {
        if (error.status !== 412) { report(error); return false; }
        if (!await ask(`Overwrite ${path}?`, [], "Overwrite", "A file of this name is there, or another program changed it.")) return false;
        await load(path, true);
        try { await store(path, text); } catch (again) { report(again); return false; }
    }
    notice(`${path} is written.`);
    return true;
}
