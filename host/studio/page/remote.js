// A remote control on the page: arrows, OK and back, by mouse, touch and keys.
import {el, iconButton, svg} from "./dom.js";

const ARROWS = {ArrowUp: "up", ArrowDown: "down", ArrowLeft: "left", ArrowRight: "right"};

/** go(direction) with up, down, left or right. `heard` says what follows, in words. */
export function remoteControl({go, ok, back}) {
    const place = (node, area) => { node.style.gridArea = area; return node; };
    const heard = el("p", {class: "muted", role: "status"});
    const node = el("div", {class: "remote", role: "group", "aria-label": "Remote control", onkeydown: event => { const to = ARROWS[event.key]; if (to) { go(to); event.preventDefault(); } }},
        ...Object.entries(ARROWS).map(([key, to]) => place(iconButton(to, key.slice(5), () => go(to)), to)),
        place(iconButton("ok", "OK", ok), "ok"), place(iconButton("back", "Back to the first button", back), "back"));
    return {node, heard};
}

/** The marks of a menu's buttons on a stage: boxes are shares of the picture. */
export function buttonMarks(stage, boxes, pressed) {
    const {x, y, w, h} = stage.box();
    return boxes.map(([left, top, width, height], i) => svg("rect", {class: i === pressed ? "press chosen" : "press", x: x + left * w, y: y + top * h, width: width * w, height: height * h, rx: 3}));
}
