// Elements, icons and the few behaviours that every part of the page shares. Data goes in as text only.

const SVG = "http://www.w3.org/2000/svg";

function fill(node, attributes, children) {
    for (const [key, value] of Object.entries(attributes ?? {})) {
        if (value === undefined || value === null || value === false) continue;
        if (key.startsWith("on")) node.addEventListener(key.slice(2), value);
        else if (key === "text") node.textContent = value;
        else if (key === "value" || key === "checked" || key === "indeterminate") node[key] = value;
        else node.setAttribute(key, value === true ? "" : value);
    }
    node.append(...children.flat().filter(child => child !== null && child !== undefined && child !== false));
    return node;
}

/** An element: el("button", {class: "quiet", onclick: go}, "Go"). */
export const el = (tag, attributes, ...children) => fill(document.createElement(tag), attributes, children);
/** The same for drawings. */
export const svg = (tag, attributes, ...children) => fill(document.createElementNS(SVG, tag), attributes, children);

const ICONS = {
    picture: "M4 5h16v14H4zM4 16l5-5 4 4 3-3 4 4M15.5 9.5h.01", film: "M4 5h16v14H4zM8 5v14M16 5v14M4 9h4M4 14h4M16 9h4M16 14h4",
    menu: "M4 5h16v14H4zM7 9h6M7 12h6M7 15h6M16 9v6", slideshow: "M7 8h13v11H7zM4 16V5h12M11 11l4 2.5-4 2.5z",
    disc: "M12 3a9 9 0 1 0 .01 0zM12 10a2 2 0 1 0 .01 0z", undo: "M9 7L4 12l5 5M4 12h10a5 5 0 0 1 5 5", redo: "M15 7l5 5-5 5M20 12H10a5 5 0 0 0-5 5",
    theme: "M12 4a8 8 0 1 0 .01 0zM12 4v16a8 8 0 0 0 0-16z", queue: "M5 7h14M5 12h14M5 17h9", close: "M6 6l12 12M18 6L6 18", play: "M8 5l11 7-11 7z",
    pause: "M8 5v14M16 5v14", up: "M6 14l6-6 6 6", down: "M6 10l6 6 6-6", left: "M14 6l-6 6 6 6", right: "M10 6l6 6-6 6", plus: "M12 5v14M5 12h14", minus: "M5 12h14",
    folder: "M3 6h7l2 2h9v11H3z", sound: "M9 18a2.5 2.5 0 1 1-.01 0zM9 15V5l10-2v11M19 14a2.5 2.5 0 1 1-5 2.5 2.5 2.5 0 0 1 5 0z",
    eye: "M2 12s4-6 10-6 10 6 10 6-4 6-10 6-10-6-10-6zM12 9a3 3 0 1 0 .01 0z", grip: "M9 6h.01M15 6h.01M9 12h.01M15 12h.01M9 18h.01M15 18h.01",
    split: "M12 3v18M4 7h5M4 12h5M4 17h5M15 7h5v10h-5", save: "M5 4h11l3 3v13H5zM8 4v5h7V4M8 20v-6h8v6", copy: "M8 8h12v12H8zM4 16V4h12",
    key: "M12 5l7 7-7 7-7-7z", fit: "M4 9V4h5M15 4h5v5M20 15v5h-5M9 20H4v-5", dice: "M5 5h14v14H5zM9 9h.01M15 15h.01M12 12h.01", file: "M6 3h8l4 4v14H6zM14 3v4h4",
    trash: "M5 7h14M10 7V4h4v3M7 7l1 13h8l1-13", bookmark: "M7 4h10v16l-5-4-5 4z", ok: "M5 13l4 4 10-10", back: "M20 12H5M11 6l-6 6 6 6",
};
export const icon = name => svg("svg", {viewBox: "0 0 24 24", class: "icon", "aria-hidden": "true"}, svg("path", {d: ICONS[name] ?? ICONS.file}));

/** A button of an icon; its label is read out and shown as a tip. */
export const iconButton = (name, label, onclick, attributes = {}) =>
    el("button", {type: "button", class: "icon-button", "aria-label": label, title: label, onclick, ...attributes}, icon(name));

export const button = (label, onclick, attributes = {}, iconName) =>
    el("button", {type: "button", onclick, ...attributes}, iconName && icon(iconName), el("span", {text: label}));

/** Brings the children of a node in line with items; a node that stays keeps its focus. make(item) returns {node, update}. */
export function keyed(parent, items, keyOf, make) {
    const parts = parent.parts ??= new Map(), kept = new Set(items.map(keyOf));
    for (const [key, part] of parts) if (!kept.has(key)) { part.node.remove(); part.dispose?.(); parts.delete(key); }
    let before = null;
    items.forEach((item, index) => {
        const key = keyOf(item);
        let part = parts.get(key);
        if (!part) parts.set(key, part = make(item));
        const place = before ? before.nextSibling : parent.firstChild;
        if (part.node !== place) {
            const focus = part.node.contains(document.activeElement) ? document.activeElement : null;
            parent.insertBefore(part.node, place);
            focus?.focus();
        }
        part.update?.(item, index);
        before = part.node;
    });
}

/** One stop of the Tab key for a grid or list; arrows, Home and End move within. */
export function roving(parent, selector, onMove) {
    const stops = () => [...parent.querySelectorAll(selector)];
    const mark = at => { for (const stop of stops()) stop.tabIndex = stop === at ? 0 : -1; };
    parent.addEventListener("focusin", event => { const at = event.target.closest(selector); if (at && parent.contains(at)) mark(at); });
    parent.addEventListener("keydown", event => {
        const list = stops(), at = list.indexOf(event.target.closest(selector));
        if (at < 0 || event.altKey || event.ctrlKey || event.metaKey || event.target.matches("input, select, textarea")) return;
        const top = list[0].offsetTop, across = Math.max(1, list.findIndex(stop => stop.offsetTop > top + 4));
        const step = {ArrowRight: 1, ArrowLeft: -1, ArrowDown: across, ArrowUp: -across, Home: -at, End: list.length - 1 - at}[event.key];
        if (step === undefined) return;
        event.preventDefault();
        const next = list[Math.min(list.length - 1, Math.max(0, at + step))];
        mark(next);
        next.focus();
        next.scrollIntoView({block: "nearest"});
        onMove?.(next);
    });
    return () => { const list = stops(); if (list.length && !list.some(stop => stop.tabIndex === 0)) mark(list[0]); };
}

/** Drags with mouse, pen and touch: begin(event) returns {move(event), end(event)}. */
export function draggable(node, begin) {
    node.addEventListener("pointerdown", event => {
        if (event.button !== 0) return;
        const drag = begin(event);
        if (!drag) return;
        event.preventDefault();
        event.stopPropagation();
        node.focus?.({preventScroll: true});
        node.setPointerCapture(event.pointerId);
        const move = e => drag.move(e);
        const end = e => {
            node.removeEventListener("pointermove", move);
            for (const name of ["pointerup", "pointercancel"]) node.removeEventListener(name, end);
            drag.end?.(e);
        };
        node.addEventListener("pointermove", move);
        for (const name of ["pointerup", "pointercancel"]) node.addEventListener(name, end);
    });
}

/** From an edge of a panel as near as this, dragging scrolls. */
const EDGE = 40;

/** Orders the children of a list by a grip that is dragged, and by Alt with the arrow keys; move(from, to). */
export function reorderable(list, move) {
    // Of a long list only a part is there; its lines know their places.
    const items = () => [...list.children], placeOf = item => item.place ?? items().indexOf(item), count = () => list.count ?? items().length;
    return {
        grip(item) {
            const grip = iconButton("grip", "Drag to order, or Alt with arrow keys", null, {class: "icon-button grip"});
            draggable(grip, () => {
                const from = placeOf(item), panel = list.closest(".panel");
                let to = from;
                item.classList.add("dragged");
                return {
                    move(event) {
                        const over = document.elementsFromPoint(event.clientX, event.clientY).find(node => node.parentElement === list);
                        if (over) to = placeOf(over);
                        for (const node of items()) node.classList.toggle("drop", placeOf(node) === to && to !== from);
                        const {top, bottom} = panel?.getBoundingClientRect() ?? {};
                        if (event.clientY > bottom - EDGE) panel.scrollTop += EDGE / 2; else if (event.clientY < top + EDGE) panel.scrollTop -= EDGE / 2;
                    },
                    end(event) {
                        for (const node of items()) node.classList.remove("drop", "dragged");
                        if (to !== from && event.type === "pointerup") move(from, to);
                    },
                };
            });
            item.addEventListener("keydown", event => {
                if (!event.altKey) return;
                const step = {ArrowUp: -1, ArrowLeft: -1, ArrowDown: 1, ArrowRight: 1}[event.key], from = placeOf(item), to = from + step;
                if (!step || to < 0 || to >= count()) return;
                event.preventDefault();
                move(from, to);
                announce(`Place ${to + 1} of ${count()}`);
            });
            return grip;
        },
    };
}

export const moved = (list, from, to) => { const next = [...list]; next.splice(to, 0, ...next.splice(from, 1)); return next; };
export const clamp = (value, low, high) => Math.min(high, Math.max(low, value));
export const round = (value, digits = 2) => String(Number(value.toFixed(digits)));
export const fileName = path => path.split("/").pop();
export const stem = path => fileName(path).replace(/\.[^.]+$/, "");

/** A path as it is written in a file of a folder, and back: both start at the studio's folder. */
export const folderOf = path => path.split("/").slice(0, -1).join("/");
export const relative = (folder, path) => !folder ? path : path.startsWith(folder + "/") ? path.slice(folder.length + 1) : "../".repeat(folder.split("/").length) + path;
export function resolve(folder, path) {
    const parts = folder ? folder.split("/") : [];
    for (const part of path.split("/")) if (part === "..") parts.pop(); else if (part !== ".") parts.push(part);
    return parts.join("/");
}

/** Seconds as 1:02:03.4 */
export function clock(seconds, digits = 1) {
    const whole = Math.floor(seconds), two = n => String(n).padStart(2, "0");
    const fraction = digits ? (seconds - whole).toFixed(digits).slice(1) : "";
    return (whole >= 3600 ? `${Math.floor(whole / 3600)}:${two(Math.floor(whole / 60) % 60)}` : Math.floor(whole / 60)) + `:${two(whole % 60)}${fraction}`;
}

/** Says something to screen readers, politely. */
export function announce(text) { document.getElementById("said").textContent = text; }

/** A message that goes by itself; faults stay until they are closed. */
export function notice(text, fault = false, ...more) {
    const node = el("div", {class: fault ? "notice fault" : "notice", role: fault ? "alert" : "status"}, el("span", {text}), ...more,
        iconButton("close", "Close the message", () => node.remove()));
    const box = document.getElementById("notices");
    for (const other of [...box.children]) if (other.firstChild.textContent === text) other.remove();
    box.append(node);
    if (!fault) setTimeout(() => node.remove(), 6000);
}

/** A form in a dialogue; resolves with its fields by name, or null. */
export function ask(title, fields, action, about) {
    return new Promise(resolve => {
        const form = el("form", {method: "dialog"}, el("h2", {text: title}), about && el("p", {class: "muted", text: about}), ...fields,
            el("div", {class: "row end"}, button("Cancel", () => dialog.close()), el("button", {class: "primary", value: "yes", text: action})));
        const dialog = el("dialog", {"aria-label": title, onclose() {
            resolve(dialog.returnValue === "yes" ? Object.fromEntries(new FormData(form)) : null);
            dialog.remove();
        }}, form);
        document.body.append(dialog);
        dialog.showModal();
        const first = form.querySelector("input, select");
        first?.focus();
        if (first?.type === "text") first.select();
    });
}

export const field = (label, control, hint) => el("label", {class: "field"}, el("span", {class: "label", text: label}), control, hint && el("small", {text: hint}));
