// Handles on the picture itself. They follow from the kinds of the parameters in a group: a column and a row are a point, with
// a length a circle, two of each a rectangle, one or two alone are lines.
import {clamp, draggable, svg} from "./dom.js";
import {labelOf, wholeOf} from "./forms.js";

/** The shapes of an effect: {kind, parts: {name: parameter}}, the same for a new effect as for those we know. */
export function shapesOf(effect) {
    const groups = new Map();
    for (const parameter of effect.parameters)
        if (["column", "row", "length"].includes(parameter.kind)) groups.set(parameter.group, [...(groups.get(parameter.group) ?? []), parameter]);
    const shapes = [];
    for (const list of groups.values()) {
        const of = kind => list.filter(parameter => parameter.kind === kind), [columns, rows, lengths] = ["column", "row", "length"].map(of);
        if (columns.length === 2 && rows.length === 2) shapes.push({kind: "rectangle", parts: {x: columns[0], y: rows[0], x2: columns[1], y2: rows[1]}});
        else if (columns.length === 1 && rows.length === 1) shapes.push({kind: lengths.length ? "circle" : "point", parts: {x: columns[0], y: rows[0], r: lengths[0]}});
        else {
            for (const x of columns) shapes.push({kind: "column", parts: {x}});
            for (const y of rows) shapes.push({kind: "row", parts: {y}});
        }
    }
    return shapes.map(shape => ({...shape, label: part => labelOf(effect, shape.parts[part])}));
}

/** The shapes of an area's text, as "circle,50%,40%,15%". */
export const AREAS = {circle: ["x", "y", "r"], ellipse: ["x", "y", "rx", "ry"], rectangle: ["x", "y", "w", "h"]};

/**
 * Handles over a stage. get(part) is a part's place as a share of what it is measured by, set({part: share}) stores some at once.
 * A shape's kind says what is drawn and which points are dragged.
 */
export class Handles {
    constructor(stage) {
        this.stage = stage;
        this.group = svg("g", {});
        stage.overlay.append(this.group);
        stage.marks.push(() => this.update());
        this.shapes = [];
    }
    /** shapes: [{kind, label(part), get(part), set(values)}] */
    show(shapes) {
        // What is dragged stays in the hand.
        if (this.held) { this.next = shapes; return; }
        const dots = () => [...this.group.querySelectorAll(".handle")], had = dots().indexOf(document.activeElement);
        this.group.replaceChildren();
        this.shapes = shapes.map(shape => this.draw(shape));
        this.update();
        dots()[had]?.focus();
    }
    drag(move) {
        this.held = true;
        return {move, end: () => {
            this.held = false;
            if (this.next) this.show(this.next);
            this.next = null;
        }};
    }
    update() { for (const shape of this.shapes) shape(); }

    draw(shape) {
        const {stage} = this, {get, set} = shape;
        const ratio = () => { const {width, height} = stage.source, short = Math.min(width, height); return [short / width, short / height]; };
        const outline = svg(shape.kind === "circle" || shape.kind === "ellipse" ? "ellipse" : shape.kind === "rectangle" || shape.kind === "box" ? "rect" : "path", {class: "outline"});
        const shadow = outline.cloneNode();
        shadow.setAttribute("class", "outline shadow");
        this.group.append(shadow, outline);
        // Each point: where it is, and what follows from moving it there.
        const centre = {name: "place", at: () => [get("x"), get("y")], to: (x, y) => ({x, y})};
        const kinds = {
            point: [centre],
            circle: [centre, {name: "radius", at: () => [get("x") + get("r") * ratio()[0], get("y")], to: x => ({r: Math.max(0, (x - get("x")) / ratio()[0])})}],
            ellipse: [centre, {name: "width", at: () => [get("x") + get("rx"), get("y")], to: x => ({rx: Math.max(0, x - get("x"))})},
                {name: "height", at: () => [get("x"), get("y") + get("ry")], to: (x, y) => ({ry: Math.max(0, y - get("y"))})}],
            rectangle: [{name: "first corner", at: () => [get("x"), get("y")], to: (x, y) => ({x, y})},
                {name: "opposite corner", at: () => [get("x2"), get("y2")], to: (x, y) => ({x2: x, y2: y})},
                {name: "middle", at: () => [(get("x") + get("x2")) / 2, (get("y") + get("y2")) / 2], to: (x, y) => {
                    const w = get("x2") - get("x"), h = get("y2") - get("y"), left = clamp(x - w / 2, Math.min(0, -w), Math.max(1 - w, 1)), top = clamp(y - h / 2, Math.min(0, -h), Math.max(1 - h, 1));
                    return {x: clamp(left, 0, 1 - Math.max(0, w)), y: clamp(top, 0, 1 - Math.max(0, h)), x2: clamp(left, 0, 1 - Math.max(0, w)) + w, y2: clamp(top, 0, 1 - Math.max(0, h)) + h};
                }}],
            box: [{name: "place", at: () => [get("x"), get("y")], to: (x, y) => ({x, y})},
                ...(shape.fixed ? [] : [{name: "size", at: () => [get("x") + get("w"), get("y") + get("h")], to: (x, y) => ({w: Math.max(0.01, x - get("x")), h: Math.max(0.01, y - get("y"))})}])],
            column: [{name: "column", at: () => [get("x"), 0.5], to: x => ({x})}],
            row: [{name: "row", at: () => [0.5, get("y")], to: (x, y) => ({y})}],
        };
        const free = shape.kind === "box";
        const move = (point, x, y) => set(free ? point.to(x, y) : point.to(clamp(x, 0, 1), clamp(y, 0, 1)));
        const dots = kinds[shape.kind].map(point => {
            const dot = svg("circle", {r: 8, class: "handle", tabindex: 0, role: "slider", "aria-label": `${shape.name ? shape.name + ": " : ""}${point.name}`, "aria-roledescription": "handle on the picture"});
            draggable(dot, event => {
                const at = point.at(), begin = stage.share(event);
                return this.drag(e => { const now = stage.share(e); move(point, at[0] + now[0] - begin[0], at[1] + now[1] - begin[1]); });
            });
            dot.addEventListener("keydown", event => {
                const by = event.shiftKey ? 0.001 : 0.01, step = {ArrowLeft: [-by, 0], ArrowRight: [by, 0], ArrowUp: [0, -by], ArrowDown: [0, by]}[event.key];
                if (!step || event.altKey) return;
                event.preventDefault();
                event.stopPropagation();
                const [x, y] = point.at();
                move(point, x + step[0], y + step[1]);
            });
            this.group.append(dot);
            return {point, dot};
        });
        // The outline of a box is dragged as well, which a finger finds more easily than its corner.
        if (free) {
            outline.classList.add("filled");
            draggable(outline, event => {
                const at = [get("x"), get("y")], begin = stage.share(event);
                shape.choose?.();
                return this.drag(e => { const now = stage.share(e); set({x: at[0] + now[0] - begin[0], y: at[1] + now[1] - begin[1]}); });
            });
        }
        return () => {
            const box = stage.box(), X = x => box.x + x * box.w, Y = y => box.y + y * box.h, attributes = {};
            if (shape.kind === "circle") Object.assign(attributes, {cx: X(get("x")), cy: Y(get("y")), rx: Math.max(0, get("r") * ratio()[0] * box.w), ry: Math.max(0, get("r") * ratio()[1] * box.h)});
            else if (shape.kind === "ellipse") Object.assign(attributes, {cx: X(get("x")), cy: Y(get("y")), rx: Math.max(0, get("rx") * box.w), ry: Math.max(0, get("ry") * box.h)});
            else if (shape.kind === "rectangle" || shape.kind === "box") {
                const x2 = free ? get("x") + get("w") : get("x2"), y2 = free ? get("y") + get("h") : get("y2");
                Object.assign(attributes, {x: Math.min(X(get("x")), X(x2)), y: Math.min(Y(get("y")), Y(y2)), width: Math.abs(X(x2) - X(get("x"))), height: Math.abs(Y(y2) - Y(get("y")))});
            } else if (shape.kind === "column") attributes.d = `M${X(get("x"))} ${box.y}V${box.y + box.h}`;
            else if (shape.kind === "row") attributes.d = `M${box.x} ${Y(get("y"))}H${box.x + box.w}`;
            else attributes.d = "";
            for (const [name, value] of Object.entries(attributes)) for (const node of [outline, shadow]) node.setAttribute(name, value);
            for (const {point, dot} of dots) {
                const [x, y] = point.at();
                dot.setAttribute("cx", X(x));
                dot.setAttribute("cy", Y(y));
                dot.setAttribute("aria-valuenow", Math.round(x * 100));
                dot.setAttribute("aria-valuetext", `${Math.round(x * 100)} % across, ${Math.round(y * 100)} % down`);
            }
        };
    }
}

/** A place's text as a share of what it is measured by, and back. */
export const shareOf = (text, kind, size) => (/%/.test(text) ? parseFloat(text) / 100 : parseFloat(text) / wholeOf(kind, size)) || 0;
export const textOfShare = share => `${Number((share * 100).toFixed(2))}%`;
