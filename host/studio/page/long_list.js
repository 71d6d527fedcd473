// A list of which only the lines in sight exist, so that thousands scroll as smoothly as ten.
import {keyed} from "./dom.js";

const LINE = 52, GAP = 6, SPARE = 4;

export class LongList {
    /** `list` is a list element in a panel that scrolls; make(item) returns {node, update(item, index), dispose}, of items with an id. */
    constructor(list, make) {
        Object.assign(this, {list, make, items: [], opened: null, more: 0});
        list.classList.add("long");
        // A line that is open is as high as what is in it.
        this.heights = new ResizeObserver(([{target}]) => {
            const more = Math.max(0, target.offsetHeight + GAP - LINE);
            if (target.isConnected && more !== this.more) { this.more = more; this.paint(); }
        });
    }
    /** Shows these items, of which one may be open. */
    set(items, opened) {
        if (opened !== this.opened) { this.more = 0; this.heights.disconnect(); }
        Object.assign(this, {items, opened});
        if (!this.panel && (this.panel = this.list.closest(".panel"))) {
            this.panel.addEventListener("scroll", () => this.paint(), {passive: true});
            new ResizeObserver(() => this.paint()).observe(this.panel);
        }
        this.paint(true);
    }
    top(index) { return index * LINE + (this.openAt >= 0 && index > this.openAt ? this.more : 0); }
    paint(fresh) {
        const {items, list, panel} = this;
        this.openAt = items.findIndex(({id}) => id === this.opened);
        list.count = items.length;
        list.style.height = `${this.top(items.length)}px`;
        if (!panel?.clientHeight) return;
        const begin = panel.getBoundingClientRect().top - list.getBoundingClientRect().top;
        const first = Math.max(0, Math.floor((begin - this.more) / LINE) - SPARE), end = Math.ceil((begin + panel.clientHeight) / LINE) + SPARE;
        // What is dragged, or has the focus, stays wherever it is scrolled to.
        const held = node => node.classList.contains("dragged") || node.contains(document.activeElement);
        const keep = new Set([...(list.parts?.values() ?? [])].filter(({node}) => held(node)).map(({node}) => node.item));
        const shown = items.map((item, index) => ({item, index})).filter(({item, index}) => (index >= first && index < end) || keep.has(item.id));
        keyed(list, shown, ({item}) => item.id, ({item}) => {
            const part = this.make(item);
            part.node.item = item.id;
            return {node: part.node, dispose: part.dispose, place: -1, update({item: now, index}) {
                if (fresh || this.place !== index) part.update(now, index);
                this.place = part.node.place = index;
            }};
        });
        for (const {item, index} of shown) {
            const {node} = list.parts.get(item.id);
            node.style.transform = `translateY(${this.top(index)}px)`;
            node.setAttribute("aria-posinset", index + 1);
            node.setAttribute("aria-setsize", items.length);
            if (index === this.openAt) this.heights.observe(node);
        }
    }
}
