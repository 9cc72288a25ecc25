"use strict";
(() => {
  const data = JSON.parse(document.getElementById("data").textContent);

  // ---- Elements. Text goes in as text and never as markup.

  function fill(node, attributes, children) {
    for (const [name, value] of Object.entries(attributes || {})) {
      if (name.startsWith("on")) node.addEventListener(name.slice(2), value);
      else if (name.startsWith("--")) node.style.setProperty(name, value);
      else if (value === true) node.setAttribute(name, "");
      else if (value !== false && value != null) node.setAttribute(name, value);
    }
    node.append(...children.flat(Infinity).filter((c) => c != null && c !== false));
    return node;
  }
  const h = (tag, attributes, ...children) =>
    fill(document.createElement(tag), attributes, children);
  const draw = (tag, attributes, ...children) =>
    fill(document.createElementNS("http://www.w3.org/2000/svg", tag), attributes, children);
  const $ = (id) => document.getElementById(id);
  const say = (text) => { $("status").textContent = text; };
  const link = (text, action) =>
    h("button", { type: "button", class: "link", onclick: action }, text);
  const button = (text, action) =>
    h("button", { type: "button", class: "quiet", onclick: action }, text);

  // ---- Numbers, rounded as printf rounds: a tie goes to the even digit.

  function fixed(value, digits) {
    const isTieUp = Math.abs((value * 2 ** (digits + 1)) % 4) === 1;
    return (isTieUp ? value - Math.sign(value) * 10 ** -digits / 4 : value).toFixed(digits);
  }
  const percent = (share, digits = 1) => (share == null ? "–" : fixed(share * 100, digits) + " %");
  const divide = (a, b) => (b === 0 ? null : a / b);
  const many = (count, what, plural = what + "s") =>
    `${count.toLocaleString("en")} ${count === 1 ? what : plural}`;
  const score = (value) => (value == null ? "no number" : String(Number(value.toPrecision(3))));

  function measure(correct, missed, wrong) {
    const precision = divide(correct, correct + wrong);
    const recall = divide(correct, correct + missed);
    const sum = (precision || 0) + (recall || 0);
    const f1 = correct + missed + wrong === 0 ? null
      : sum === 0 ? 0 : (2 * (precision || 0) * (recall || 0)) / sum;
    return { correct, missed, wrong, support: correct + missed, precision, recall, f1 };
  }

  // ---- The data as records.

  const summary = data.summary;
  const total = measure(summary.correct, summary.missed, summary.wrong);
  const judged = summary.documents;
  const classes = data.classes.map(([name, correct, missed, wrong, agreeing, threshold], id) => ({
    id, name, threshold, accuracy: divide(agreeing, judged), ...measure(correct, missed, wrong),
  }));
  const className = (id) => (id < 0 ? "nothing" : classes[id].name);
  const bdi = (text) => h("bdi", {}, text);

  // What is in the first list more often than in the second.
  function without(list, others) {
    const rest = new Map();
    for (const id of others) rest.set(id, (rest.get(id) || 0) + 1);
    return list.filter((id) => {
      const left = rest.get(id) || 0;
      rest.set(id, left - 1);
      return left <= 0;
    });
  }
  const records = (ids, scores, thresholds) => ids.map((id, i) => ({
    id, score: scores[i], threshold: thresholds ? thresholds[i] : classes[id].threshold,
  }));
  const documents = data.documents.map(
    ([name, filed, ranks, got, gotScores, gotLimits, probabilities, significant,
      seen, seenScores, seenLimits, text]) => {
      const missed = filed.length ? without(filed, got) : [];
      const wrong = filed.length ? without(got, filed) : [];
      const correct = filed.length ? without(filed, missed) : [];
      const outcome = !filed.length ? "new"
        : !missed.length && !wrong.length ? "right"
        : !got.length ? "nothing"
        : correct.length ? "partly" : "wrong";
      return { name, filed, ranks, probabilities, significant, text, missed, wrong, correct, outcome,
        got: records(got, gotScores, gotLimits),
        candidates: records(seen, seenScores, seenLimits) };
    });
  const outcomes = {
    right: "exactly right", partly: "partly right", wrong: "wrong class",
    nothing: "no class", new: "new documents",
  };

  // ---- Sections and their navigation.

  function section(id, title, lead, ...children) {
    $("sections").append(h("a", { href: "#" + id }, title));
    const node = h("section", { id, "aria-labelledby": id + "-title" },
      h("h2", { id: id + "-title" }, title),
      lead && h("p", { class: "lead" }, lead), children);
    $("main").append(node);
    return node;
  }
  function goTo(id) {
    $("panel").close();
    const title = $(id + "-title");
    title.tabIndex = -1;
    title.scrollIntoView();
    title.focus({ preventScroll: true });
  }
  const bar = (share, hue = "correct") => (share == null ? h("span", { class: "none" }, "–")
    : h("span", { class: "bar " + hue, "--v": share }, h("b", {}, percent(share))));

  // A list that shows its first entries, and more on demand.
  function growing(container, step, make) {
    const more = h("button", { type: "button", class: "more" });
    let entries = [];
    let shown = 0;
    function show(count) {
      const next = entries.slice(shown, shown + count);
      container.append(...next.map(make));
      shown += next.length;
      more.hidden = shown >= entries.length;
      more.textContent = `Show more (${(entries.length - shown).toLocaleString("en")} left)`;
    }
    more.addEventListener("click", () => show(step * 4));
    addEventListener("beforeprint", () => show(Math.max(500 - shown, 0)));
    return { more, set(list) {
      container.replaceChildren();
      entries = list;
      shown = 0;
      show(step);
    } };
  }

  // ---- Charts.

  function frame(width, height, label, ...children) {
    return draw("svg", { viewBox: `0 0 ${width} ${height}`, width, height, role: "img",
      "aria-label": label }, children);
  }
  const line = (kind, x1, y1, x2, y2) => draw("line", { class: kind, x1, y1, x2, y2 });
  const words = (x, y, anchor, text) => draw("text", { x, y, "text-anchor": anchor }, text);

  // A square of two shares, with its axes; `at` turns shares into a place.
  function square(label, across, up, make) {
    const left = 42, top = 22, width = 380, height = 210;
    const at = (x, y) => [left + x * width, top + (1 - y) * height];
    const marks = [0, 0.25, 0.5, 0.75, 1].map((share) => [
      line("axis", ...at(0, share), ...at(1, share)),
      words(left - 6, at(0, share)[1] + 4, "end", share * 100 + " %"),
      words(at(share, 0)[0], top + height + 16, "middle", share * 100 + " %"),
    ]);
    return frame(left + width + 14, top + height + 38, label, marks,
      words(left + width / 2, top + height + 33, "middle", across),
      words(left, top - 10, "start", up), make(at));
  }

  function curveChart(data_, [curve, average]) {
    return square(
      `Precision and recall at each threshold; average precision ${percent(average)}`,
      "recall", "precision", (at) => {
        let path = "";
        for (let i = 0; i < curve.length; i += 2) {
          path += (i ? "L" : "M") + at(curve[i], curve[i + 1]).map((n) => n.toFixed(1)).join(" ");
        }
        const here = data_.precision == null || data_.recall == null ? null
          : at(data_.recall, data_.precision);
        return [path && draw("path", { class: "curve", d: path }),
          curve.length === 2 && draw("circle", { class: "members", r: 4,
            cx: at(...curve)[0], cy: at(...curve)[1] }),
          here && draw("circle", { class: "here", cx: here[0], cy: here[1], r: 5 },
            draw("title", {}, "This run"))];
      });
  }

  function histogram(data_, [, , low, high, members, others]) {
    const left = 14, width = 408, half = 78, middle = 100;
    const bin = width / members.length;
    const side = (counts, kind, direction) => {
      const most = Math.max(...counts, 1);
      return counts.map((count, i) => {
        const size = (count / most) * half;
        return count > 0 && draw("rect", { class: kind, x: (left + i * bin + 0.5).toFixed(1),
          width: (bin - 1).toFixed(1), height: Math.max(size, 1).toFixed(1),
          y: (direction > 0 ? middle - Math.max(size, 1) : middle + 1).toFixed(1) },
          draw("title", {}, many(count, "document")));
      });
    };
    const place = (data_.threshold - low) / (high - low);
    const isInside = data_.threshold != null && place >= 0 && place <= 1;
    const x = left + place * width;
    const sum = (counts) => counts.reduce((a, b) => a + b, 0);
    return frame(436, 214,
      `Scores of ${many(sum(members), "document")} of the class and of ${many(sum(others), "other document")}` +
      (data_.threshold == null ? "" : `; the threshold is ${score(data_.threshold)}`),
      side(members, "members", 1), side(others, "others", -1),
      line("axis", left, middle + 0.5, left + width, middle + 0.5),
      words(left, 12, "start", `in the class: ${sum(members)}`),
      words(left, 208, "start", score(low)),
      words(left + width, 208, "end", score(high)),
      words(left + width, 12, "end", `others among the best: ${sum(others)}`),
      isInside && [line("limit", x, 18, x, 184),
        words(Math.min(Math.max(x, 60), 376), 199, "middle", `threshold ${score(data_.threshold)}`)]);
  }

  function sizeChart() {
    const shown = classes.filter((c) => c.f1 != null && c.support > 0);
    const most = Math.max(...shown.map((c) => c.support), 2);
    const left = 42, top = 16, width = 452, height = 220;
    const x = (support) => left + (Math.log(support) / Math.log(most)) * width;
    const y = (f1) => top + (1 - f1) * height;
    const ticks = [1, 10, 100, 1000, 10000, 100000].filter((n) => n < most * 0.7).concat(most);
    return frame(left + width + 16, top + height + 38, "Each class by its size and F1",
      [0, 0.25, 0.5, 0.75, 1].map((share) => [line("axis", left, y(share), left + width, y(share)),
        words(left - 6, y(share) + 4, "end", share * 100 + " %")]),
      ticks.map((n) => words(x(n), top + height + 18, "middle", n.toLocaleString("en"))),
      words(left + width / 2, top + height + 34, "middle", "documents in the class"),
      words(left + width + 10, top - 4, "end", "F1"),
      shown.slice(0, 2000).map((c) => draw("circle", { class: "class-dot", r: 5,
        cx: x(c.support).toFixed(1), cy: y(c.f1).toFixed(1), onclick: () => openClass(c.id) },
        draw("title", {}, `${c.name}: ${percent(c.f1)} of ${many(c.support, "document")}`))));
  }

  // ---- Overview.

  function tile(label, value, text, extra) {
    return h("div", { class: "card tile" }, h("div", { class: "label" }, label),
      h("div", { class: "value" }, value), h("div", { class: "text" }, text), extra);
  }

  function outcomeCard() {
    const counts = { right: summary.right, partly: summary.partly,
      wrong: judged - summary.right - summary.partly - summary.nothing, nothing: summary.nothing };
    const kinds = Object.keys(counts).filter((kind) => counts[kind] > 0);
    return h("div", { class: "card" }, h("h3", {}, "What became of the documents"),
      h("div", { class: "stack", "aria-hidden": "true" },
        kinds.map((kind) => h("i", { class: kind, "--v": counts[kind] / judged }))),
      h("ul", { class: "legend" }, kinds.map((kind) => h("li", {},
        h("span", { class: "dot " + kind }),
        link(`${outcomes[kind]} ${counts[kind].toLocaleString("en")} (${percent(counts[kind] / judged)})`,
          () => showDocuments(kind, null))))));
  }

  function hints() {
    const list = [];
    const best = (doc) => doc.outcome === "nothing" && doc.ranks.includes(1);
    const almost = documents.filter(best).length;
    if (summary.nothing > 0 && almost > 0) {
      list.push(["Got no class, though the best score is that of a right one: ",
        link(`${almost} of ${many(summary.nothing, "document")}`,
          () => showDocuments("all", { label: "no class, best score right", test: best })), "."]);
    }
    const silent = classes.filter((c) => c.support > 0 && c.correct + c.wrong === 0);
    if (silent.length > 0) {
      list.push([link(many(silent.length, "class", "classes"), () => {
        classView.only("silent");
        goTo("classes");
      }), ` of ${many(silent.reduce((sum, c) => sum + c.support, 0), "document")} in all `,
        silent.length === 1 ? "was" : "were", " never assigned: ",
        silent.slice().sort((a, b) => b.support - a.support).slice(0, 4)
          .map((c, i) => [i ? ", " : "", link(bdi(c.name), () => openClass(c.id))]),
        silent.length > 4 ? " and others." : "."]);
    }
    const pair = data.pairs.find(([, got]) => got >= 0);
    if (pair) {
      list.push(["The most frequent confusion: ",
        link([many(pair[2], "document"), " of ", bdi(className(pair[0])), " got ", bdi(className(pair[1]))],
          () => showPair(pair[0], pair[1])), "."]);
    }
    const sizes = classes.map((c) => c.support).sort((a, b) => b - a);
    const large = classes.filter((c) => c.f1 != null && c.support >= 5 && c.support >= sizes[Math.floor(sizes.length / 2)]);
    const weak = large.sort((a, b) => a.f1 - b.f1)[0];
    if (weak && weak.f1 < 1) {
      list.push(["The weakest of the larger classes: ", link(bdi(weak.name), () => openClass(weak.id)),
        `, F1 ${percent(weak.f1)} of ${many(weak.support, "document")}.`]);
    }
    return list.length > 0 && h("div", { class: "card" }, h("h3", {}, "What stands out"),
      h("ul", { class: "hints" }, list.map((item) => h("li", {}, item))));
  }

  function overview() {
    const classCount = many(classes.length, "class", "classes");
    if (judged === 0) {
      section("overview", "Overview", null, h("p", { class: "notice" },
        `None of the ${many(documents.length + data.omitted, "document")} is in a class: there is nothing to measure. `,
        "What they got is below."));
      return;
    }
    const [precision, recall, f1] = summary.macro;
    section("overview", "Overview",
      `${many(judged, "document")} in ${classCount}: ${summary.correct.toLocaleString("en")} of ` +
      `${many(total.support, "filing")} found, ${many(summary.wrong, "wrong assignment")}.`,
      h("div", { class: "tiles" },
        tile("Micro F1", percent(total.f1, 2),
          `precision ${percent(total.precision, 2)}, recall ${percent(total.recall, 2)}`),
        tile("Macro F1", percent(f1, 2), `precision ${percent(precision, 2)}, recall ${percent(recall, 2)}`),
        tile("Exactly right", percent(summary.right / judged, 2), `${many(summary.right, "document")} got all their classes and no other`),
        tile("First class right", percent(summary.firstRight / judged, 2),
          `mean reciprocal rank ${percent(summary.reciprocalRank, 2)}`)),
      h("div", { class: "columns" }, h("div", { class: "pile" }, outcomeCard(), hints()),
        classes.filter((c) => c.support > 0).length >= 8 &&
          h("div", { class: "card" }, h("h3", {}, "Large and small classes"), sizeChart())));
  }

  // ---- Comparison.

  function comparison() {
    const other = data.comparison;
    if (!other) return;
    const signed = (value) => h("span", { class: value > 0 ? "up" : value < 0 ? "down" : "none" },
      (value > 0 ? "+" : value < 0 ? "−" : "") + fixed(Math.abs(value) * 100, 2));
    const label = (name) => name.replaceAll("_", " ").replace("f1", "F1");
    const figure = (value, name) => (name.startsWith("documents") || name.startsWith("without") ? value : percent(value, 2));
    const rows = h("tbody");
    const classRows = growing(rows, 12, (c) => h("tr", {}, h("td", { class: "name" }, bdi(c.class)),
      h("td", {}, c.support), h("td", {}, percent(c.first_f1)), h("td", {}, percent(c.second_f1)),
      h("td", {}, signed(c.difference))));
    classRows.set(other.classes.filter((c) => c.difference !== 0));
    const list = h("tbody");
    const docRows = growing(list, 12, (doc) => h("tr", {}, h("td", { class: "name" }, bdi(doc.document)),
      h("td", {}, h("span", { class: doc.change === "better" ? "up" : doc.change === "worse" ? "down" : "" }, doc.change)),
      [doc.true, doc.first, doc.second].map((names) =>
        h("td", {}, names.length ? names.map((name, i) => [i ? ", " : "", bdi(name)]) : h("span", { class: "none" }, "nothing")))));
    const kind = h("select", { "aria-label": "Which changes" },
      [["all", "all changes"], ["worse", "worse"], ["better", "better"], ["other", "other"]]
        .map(([value, text]) => h("option", { value }, text)));
    const set = () => docRows.set(other.documents.filter((doc) => kind.value === "all" || doc.change === kind.value));
    kind.addEventListener("change", set);
    set();
    const head = (...names) => h("thead", {}, h("tr", {}, names.map((name) => h("th", { scope: "col" }, name))));
    section("comparison", "Comparison", ["First run: ", bdi(data.file), "; second run: ", bdi(other.file), "."],
      h("div", { class: "card" }, h("p", { class: "verdict" }, other.conclusion),
        other.note && h("p", { class: "text" }, other.note)),
      h("div", { class: "columns" },
        h("div", { class: "card scroll" }, h("h3", {}, "Figures"), h("table", {}, head("", "First", "Second", "Difference"),
          h("tbody", {}, other.summary.map((row) => h("tr", {}, h("td", {}, label(row.measure)),
            h("td", {}, figure(row.first, row.measure)), h("td", {}, figure(row.second, row.measure)),
            h("td", {}, row.difference == null ? "" : signed(row.difference))))))),
        h("div", { class: "card scroll" }, h("h3", {}, "Classes that changed, by F1"),
          h("table", {}, head("Class", "Documents", "First", "Second", "Difference"), rows), classRows.more)),
      h("div", { class: "columns" }, h("div", { class: "card long scroll" }, h("h3", {}, `Documents that changed: ${other.changed}`),
        h("div", { class: "controls" }, kind),
        h("table", { class: "words" }, head("Document", "Change", "Filed in", "First", "Second"), list), docRows.more)));
  }

  // ---- Table of classes.

  const classView = (() => {
    const columns = [
      ["name", "Class", 1], ["support", "Documents", -1], ["correct", "Correct", -1],
      ["missed", "Missed", -1], ["wrong", "Wrong", -1], ["precision", "Precision", 1],
      ["recall", "Recall", 1], ["f1", "F1", 1], ["accuracy", "Accuracy", 1],
    ];
    const views = {
      all: ["all classes", () => true],
      faults: ["with faults", (c) => c.missed + c.wrong > 0],
      silent: ["never assigned", (c) => c.support > 0 && c.correct + c.wrong === 0],
      empty: ["without test documents", (c) => c.support === 0],
    };
    let sorted = "f1";
    let direction = 1;
    const search = h("input", { type: "search", placeholder: "Find a class", "aria-label": "Find a class" });
    const view = h("select", { "aria-label": "Which classes" },
      Object.entries(views).map(([value, [text]]) => h("option", { value }, text)));
    const count = h("span", { class: "count" });
    const heads = columns.map(([key, text, usual]) => h("th", { scope: "col" },
      h("button", { type: "button", onclick: () => {
        direction = sorted === key ? -direction : usual;
        sorted = key;
        show();
      } }, text)));
    const rows = h("tbody");
    const amount = (value, hue) => h("td", { class: value === 0 ? "zero" : "" }, value.toLocaleString("en"));
    const list = growing(rows, 40, (c) => h("tr", {},
      h("th", { scope: "row" }, link(h("bdi", { title: c.name }, c.name), () => openClass(c.id))),
      amount(c.support), amount(c.correct), amount(c.missed), amount(c.wrong),
      h("td", {}, bar(c.precision)), h("td", {}, bar(c.recall)), h("td", {}, bar(c.f1)),
      h("td", {}, percent(c.accuracy, 2))));
    function compare(a, b) {
      const x = a[sorted], y = b[sorted];
      if (x == null || y == null) return (x == null) - (y == null);
      return (x < y ? -1 : x > y ? 1 : 0) * direction || b.support - a.support ||
        (a.name < b.name ? -1 : 1);
    }
    function show() {
      const wanted = search.value.toLowerCase();
      const found = classes.filter((c) => views[view.value][1](c) && c.name.toLowerCase().includes(wanted));
      list.set(found.sort(compare));
      columns.forEach(([key], i) => {
        if (key === sorted) heads[i].setAttribute("aria-sort", direction > 0 ? "ascending" : "descending");
        else heads[i].removeAttribute("aria-sort");
      });
      count.textContent = `${found.length} of ${many(classes.length, "class", "classes")}`;
      say(count.textContent);
    }
    search.addEventListener("input", show);
    view.addEventListener("change", show);
    return {
      add() {
        section("classes", "Classes", "The worst come first. A name opens curves, scores and confusions of the class.",
          h("div", { class: "card long" }, h("div", { class: "controls" }, search, view, count),
            h("div", { class: "scroll" }, h("table", { id: "class-table" },
              h("caption", { class: "unseen" }, "Figures of each class; the buttons in the first row sort it"),
              h("thead", {}, h("tr", {}, heads)), rows)), list.more));
        show();
      },
      only(name) {
        search.value = "";
        view.value = name;
        show();
      },
    };
  })();

  // ---- Tree. What is folded up is made when it is opened.

  function tree() {
    if (data.tree.length === 0) return;
    const nodes = data.tree.map(([name, father, id, correct, missed, wrong]) =>
      ({ name, father, id, sons: [], ...measure(correct, missed, wrong) }));
    const roots = [];
    for (const node of nodes) (node.father < 0 ? roots : nodes[node.father].sons).push(node);
    const figures = (node) => [h("span", { class: node.support ? "" : "none" }, node.support.toLocaleString("en")),
      h("span", {}, bar(node.precision)), h("span", {}, bar(node.recall)), h("span", {}, bar(node.f1))];
    const label = (node) => h("span", { class: "fold" },
      node.id >= 0 ? link(bdi(node.name), (event) => {
        event.preventDefault();
        openClass(node.id);
      }) : bdi(node.name));
    function branch(node) {
      if (node.sons.length === 0) return h("li", { class: "leaf" }, h("div", { class: "branch" }, label(node), figures(node)));
      const sons = h("ul");
      const fold = h("details", {}, h("summary", { class: "branch" }, label(node), figures(node)), sons);
      fold.addEventListener("toggle", () => {
        if (fold.open && !sons.firstChild) sons.append(...ordered(node.sons));
      });
      fold.unfold = (isOpen) => {
        if (isOpen && !sons.firstChild) sons.append(...ordered(node.sons));
        fold.open = isOpen;
      };
      return h("li", {}, fold);
    }
    const ordered = (list) => list.slice().sort((a, b) => (a.name < b.name ? -1 : 1)).map(branch);
    const top = h("ul", { class: "tree" }, ordered(roots));
    function unfoldAll(isOpen) {
      // Opening makes further ones.
      for (const fold of top.querySelectorAll("details")) {
        fold.unfold(isOpen);
        if (isOpen) fold.querySelectorAll("details").forEach((inner) => inner.unfold(true));
      }
      let closed = isOpen ? top.querySelectorAll("details:not([open])") : [];
      while (closed.length > 0) {
        closed.forEach((fold) => fold.unfold(true));
        closed = top.querySelectorAll("details:not([open])");
      }
    }
    section("tree", "Tree",
      "A document counts once at each father: in a branch are the documents of all classes below. Where a father does better than its sons, they are confused with each other.",
      h("div", { class: "card long" },
        h("div", { class: "controls" }, button("Unfold all", () => unfoldAll(true)), button("Fold all", () => unfoldAll(false))),
        h("div", { class: "branch head", "aria-hidden": "true" }, ["Class", "Documents", "Precision", "Recall", "F1"].map((t) => h("span", {}, t))),
        top));
  }

  // ---- Confusions.

  const mostInMatrix = 24;

  function showPair(filed, got) {
    const isSame = filed === got;
    showDocuments("all", {
      label: isSame ? [bdi(className(filed)), ", found"] : ["filed in ", bdi(className(filed)), ", got ", bdi(className(got))],
      test: (doc) => {
        if (isSame) return doc.correct.includes(filed);
        if (got < 0) return doc.missed.includes(filed) && doc.wrong.length === 0;
        return doc.wrong.includes(got) && (doc.missed.length ? doc.missed : doc.correct).includes(filed);
      },
    });
  }

  function confusions() {
    if (data.pairs.length === 0) {
      section("confusions", "Confusions", "No document was misjudged.");
      return;
    }
    const weight = new Map();
    for (const [filed, got, count] of data.pairs) {
      for (const id of [filed, got]) if (id >= 0) weight.set(id, (weight.get(id) || 0) + count);
    }
    const chosen = [...weight.keys()].sort((a, b) => weight.get(b) - weight.get(a)).slice(0, mostInMatrix);
    chosen.sort((a, b) => (classes[a].name < classes[b].name ? -1 : 1));
    const cells = new Map(data.pairs.map(([filed, got, count]) => [filed + " " + got, count]));
    const most = Math.max(...data.pairs.map((pair) => pair[2]));
    const cell = (filed, got) => {
      const isSame = filed === got;
      const count = isSame ? classes[filed].correct : cells.get(filed + " " + got) || 0;
      const share = isSame ? count / Math.max(classes[filed].support, 1) : Math.sqrt(count / most);
      return h("td", { class: isSame ? "same" : "" }, count > 0 && h("button", { type: "button", "--v": share,
        "aria-label": `${many(count, "document")} of ${className(filed)} got ${className(got)}`,
        title: `${className(filed)} → ${className(got)}`,
        onclick: () => showPair(filed, got) }, count));
    };
    const columns = chosen.concat(-1);
    const list = h("tbody");
    const strongest = growing(list, 12, ([filed, got, count]) => h("tr", {},
      h("td", {}, link([bdi(className(filed)), " → ", got < 0 ? h("i", {}, "nothing") : bdi(className(got))],
        () => showPair(filed, got))), h("td", {}, count)));
    strongest.set(data.pairs);
    section("confusions", "Confusions",
      "Rows are the classes in which documents are filed, columns those that they got. A number leads to the documents behind it.",
      h("div", { class: chosen.length > 9 ? "pile" : "columns" }, h("div", { class: "card" }, h("h3", {}, weight.size > chosen.length
        ? `The ${chosen.length} classes that are confused most, of ${weight.size}` : "Confusion matrix"),
        h("div", { class: "scroll" }, h("table", { class: "matrix", id: "matrix" },
          h("caption", { class: "unseen" }, "Documents by the class in which they are filed and the class that they got"),
          h("thead", {}, h("tr", {}, h("td"), columns.map((id) => h("th", { scope: "col", title: className(id) },
            h("span", {}, id < 0 ? h("i", {}, "nothing") : bdi(className(id))))))),
          h("tbody", {}, chosen.map((filed) => h("tr", {}, h("th", { scope: "row", title: className(filed) },
            bdi(className(filed))), columns.map((got) => cell(filed, got)))))))),
        h("div", { class: "card" }, h("h3", {}, "The strongest"),
        h("table", {}, h("thead", {}, h("tr", {}, h("th", { scope: "col" }, "Filed in → got"), h("th", { scope: "col" }, "Documents"))), list),
        strongest.more)));
  }

  // ---- Probabilities.

  function reliability() {
    const measured = data.reliability;
    if (!measured) return;
    const bins = measured.bins.filter((bin) => bin[0] > 0);
    const most = Math.max(...bins.map((bin) => bin[0]));
    const chart = square("Probability that was told against the share that is correct", "probability", "share that is correct",
      (at) => [line("guide", ...at(0, 0), ...at(1, 1)),
        draw("path", { class: "curve", d: bins.map(([count, correct, sum], i) =>
          (i ? "L" : "M") + at(sum / count, correct / count).map((n) => n.toFixed(1)).join(" ")).join("") }),
        bins.map(([count, correct, sum]) => {
          const [cx, cy] = at(sum / count, correct / count);
          return draw("circle", { class: "members", cx, cy, r: 3 + 7 * Math.sqrt(count / most) },
            draw("title", {}, `${many(count, "assignment")}: told ${percent(sum / count)}, correct ${percent(correct / count)}`));
        })]);
    section("probabilities", "Probabilities",
      `Whether probabilities hold what they promise: on the dotted line they do, below it they are too high. They are off by ${percent(measured.error)} on average.`,
      h("div", { class: "columns" }, h("div", { class: "card" }, chart),
        h("div", { class: "card scroll" }, h("table", {}, h("thead", {}, h("tr", {}, ["Probability", "Assignments", "Correct"].map((t) => h("th", { scope: "col" }, t)))),
          h("tbody", {}, bins.map(([count, correct, sum]) => h("tr", {}, h("td", {}, percent(sum / count)),
            h("td", {}, count.toLocaleString("en")), h("td", {}, percent(correct / count)))))))));
  }

  // ---- Documents.

  // Entries of a list, for documents that are in hundreds of classes.
  const mostOfDocument = 20;

  // Why a document got what it got, in words.
  function reasons(doc) {
    const list = [];
    const seen = new Map(doc.candidates.map((c) => [c.id, c]));
    doc.filed.forEach((id, i) => {
      if (!doc.missed.includes(id)) return;
      const c = seen.get(id);
      const name = bdi(className(id));
      if (doc.ranks[i] === 0) list.push([name, " has classes below it: no document can get it."]);
      else if (!c) list.push([name, ` was missed; it has rank ${doc.ranks[i]}.`]);
      else if (!(c.score > c.threshold)) {
        list.push([name, ` was missed: ${score(c.score)} is not above its threshold ${score(c.threshold)} (rank ${doc.ranks[i]}).`]);
      } else if (doc.got.some((g) => g.id === id)) list.push([name, " is there twice, and can be got once."]);
      else list.push([name, ` was missed though ${score(c.score)} is above its threshold ${score(c.threshold)}: ` +
        `rank ${doc.ranks[i]}, and others came before it or its father fell short.`]);
    });
    for (const id of doc.wrong) {
      const g = doc.got.find((c) => c.id === id);
      list.push([bdi(className(id)), g.score > g.threshold
        ? ` is wrong: ${score(g.score)} is above its threshold ${score(g.threshold)}.`
        : ` is wrong: it was taken as the best one, though ${score(g.score)} is not above its threshold ${score(g.threshold)}.`]);
    }
    if (list.length > mostOfDocument) list.splice(mostOfDocument, Infinity, `And ${list.length - mostOfDocument} more.`);
    if (!doc.significant) list.push("No score is above its threshold.");
    return list;
  }

  function scoreTable(doc) {
    const filed = new Set(doc.filed);
    const got = new Set(doc.got.map((g) => g.id));
    const shown = (doc.candidates.length ? doc.candidates : doc.got)
      .filter((c, i) => i < 6 || filed.has(c.id) || got.has(c.id)).slice(0, 3 * mostOfDocument);
    const high = Math.max(...shown.map((c) => Math.max(c.score || 0, c.threshold || 0)), 1e-9) * 1.05;
    const place = (value) => Math.min(Math.max((value || 0) / high, 0), 1);
    const kind = (id) => (!filed.size ? (got.has(id) ? "correct" : "")
      : filed.has(id) ? (got.has(id) ? "correct" : "missed") : got.has(id) ? "wrong" : "");
    const probability = new Map(doc.got.map((g, i) => [g.id, doc.probabilities[i]]));
    return h("table", { class: "scores" }, h("caption", {}, "Best scores; the stroke is the threshold"),
      h("thead", {}, h("tr", {}, ["Class", "", "Score", "Threshold", doc.probabilities.length > 0 && "Probability"]
        .map((t) => t !== false && h("th", { scope: "col" }, t)))),
      h("tbody", {}, shown.map((c) => h("tr", {},
        h("th", { scope: "row" }, link(bdi(className(c.id)), () => openClass(c.id)),
          kind(c.id) && h("span", { class: "unseen" }, " " + kind(c.id))),
        h("td", {}, h("span", { class: "meter " + kind(c.id), "--v": place(c.score), "--t": place(c.threshold) })),
        h("td", {}, score(c.score)), h("td", {}, score(c.threshold)),
        doc.probabilities.length > 0 && h("td", {}, probability.has(c.id) ? percent(probability.get(c.id)) : "")))));
  }

  function documentEntry(doc) {
    const chip = (id, kind, mark, told) => h("span", { class: "chip " + kind, "data-mark": mark },
      h("span", { class: "unseen" }, told), bdi(className(id)));
    const chips = doc.outcome === "new" ? doc.got.map((g) => chip(g.id, "", "→", "got "))
      : [doc.correct.map((id) => chip(id, "correct", "✓", "correct: ")),
        doc.missed.map((id) => chip(id, "missed", "−", "missed: ")),
        doc.wrong.map((id) => chip(id, "wrong", "+", "wrong: "))].flat();
    const more = chips.length - mostOfDocument;
    const fold = h("details", {}, h("summary", {},
      h("span", { class: "doc-name" }, h("span", { class: "fold" }), h("span", { class: "dot " + doc.outcome, title: outcomes[doc.outcome] }), bdi(doc.name)),
      h("span", { class: "chips" }, chips.slice(0, mostOfDocument), more > 0 && ` and ${more} more`, doc.got.length === 0 && h("span", { class: "none" }, "got no class"))));
    fold.addEventListener("toggle", () => {
      if (!fold.open || fold.children.length > 1) return;
      const why = reasons(doc);
      fold.append(h("div", { class: "inside" },
        h("div", {}, why.length > 0 && h("ul", { class: "why" }, why.map((item) => h("li", {}, item))),
          doc.candidates.length + doc.got.length > 0 && scoreTable(doc)),
        doc.text != null && (doc.text ? h("pre", { class: "text", dir: "auto", tabindex: 0, "aria-label": "Text" }, doc.text)
          : h("p", { class: "text" }, "Its text was not found."))));
    });
    return h("li", {}, fold);
  }

  const documentView = (() => {
    const search = h("input", { type: "search", placeholder: "Find in names and texts", "aria-label": "Find in names and texts of documents" });
    const kinds = [["misjudged", "misjudged"], ["wrong", outcomes.wrong], ["nothing", outcomes.nothing],
      ["partly", outcomes.partly], ["right", outcomes.right], ["all", "all"]];
    const view = h("select", { "aria-label": "Which documents" }, kinds.map(([value, text]) => h("option", { value }, text)));
    const chip = h("span");
    const count = h("span", { class: "count" });
    const entries = h("ul", { class: "documents", id: "document-list" });
    const list = growing(entries, 40, documentEntry);
    let filter = null;
    function show() {
      const wanted = search.value.toLowerCase();
      const found = documents.filter((doc) =>
        (view.value === "all" || doc.outcome === view.value ||
          (view.value === "misjudged" && doc.outcome !== "right" && doc.outcome !== "new")) &&
        (!filter || filter.test(doc)) &&
        (!wanted || doc.name.toLowerCase().includes(wanted) || (doc.text && doc.text.toLowerCase().includes(wanted))));
      list.set(found);
      count.textContent = many(found.length, "document");
      say(count.textContent);
      chip.replaceChildren(...(filter ? [h("button", { type: "button", class: "chip filter", onclick: () => {
        filter = null;
        show();
      } }, h("span", {}, filter.label), " ×", h("span", { class: "unseen" }, "remove this filter"))] : []));
    }
    let waiting = 0;
    search.addEventListener("input", () => {
      clearTimeout(waiting);
      waiting = setTimeout(show, 120);
    });
    view.addEventListener("change", show);
    return {
      add() {
        if (judged === 0) view.value = "all";
        else if (summary.right === judged) view.value = "right";
        section("documents", "Documents",
          ["✓ found, − missed, + wrong. A document opens to its scores, and why it was judged so.",
            data.omitted > 0 && ` ${many(data.omitted, "document")} that would make the page too large ${data.omitted === 1 ? "is" : "are"} left out.`].filter(Boolean).join(""),
          h("div", { class: "card long" }, h("div", { class: "controls" }, search, view, chip, count), entries, list.more));
        show();
      },
      set(kind, wanted) {
        view.value = kind;
        filter = wanted;
        search.value = "";
        show();
      },
    };
  })();

  function showDocuments(kind, filter) {
    documentView.set(kind, filter);
    goTo("documents");
  }

  // ---- The panel of a class.

  function openClass(id) {
    const c = classes[id];
    const chart = data.charts[id];
    const panel = $("panel");
    const fact = (label, value) => h("div", {}, h("b", {}, value), label);
    const role = (label, list, kind) => button(`${label}: ${c[kind]}`, () => showDocuments("all", {
      label: [bdi(c.name), ` ${list}`], test: (doc) => doc[kind].includes(id) }));
    const pairs = (place, other, arrow) => data.pairs.filter((pair) => pair[place] === id && pair[other] >= 0).slice(0, 6)
      .map((pair) => h("li", {}, link([arrow, bdi(className(pair[other])), ` (${pair[2]})`], () => showPair(pair[0], pair[1]))));
    const lost = pairs(0, 1, "got ");
    const gained = pairs(1, 0, "from ");
    panel.replaceChildren();
    fill(panel, {}, [
      h("div", { class: "panel-head" }, h("h2", { id: "panel-title" }, bdi(c.name)),
        h("button", { type: "button", class: "quiet", autofocus: true, onclick: () => panel.close() }, "Close")),
      h("div", { class: "facts" }, fact("precision", percent(c.precision)), fact("recall", percent(c.recall)), fact("F1", percent(c.f1)),
        fact("documents", c.support.toLocaleString("en")), fact("threshold", c.threshold == null ? "–" : score(c.threshold)),
        fact("average precision", chart && c.support ? percent(chart[1]) : "–")),
      h("div", { class: "buttons" }, role("Found", "found", "correct"), role("Missed", "missed", "missed"), role("Wrong", "wrongly got", "wrong")),
      chart && chart[0].length > 0 && [h("h3", {}, "Precision and recall"),
        h("p", { class: "text" }, "What other thresholds would have led to; the ring is this run. Known are the scores of the best 20 classes of each document."),
        curveChart(c, chart)],
      chart && chart[4].concat(chart[5]).some((n) => n > 0) && [h("h3", {}, "Scores"),
        h("p", { class: "text" }, "Above: documents of the class. Below: others, at a scale of their own."), histogram(c, chart)],
      (lost.length > 0 || gained.length > 0) && [h("h3", {}, "Confused with"), h("ul", { class: "hints" }, lost, gained)]]);
    if (!panel.open) panel.showModal();
    panel.scrollTop = 0;
  }
  $("panel").addEventListener("click", (event) => {
    if (event.target === $("panel") && event.offsetX < 0) $("panel").close();
  });

  // ---- Colours: as the system has them, or as the reader wants them.

  const themes = [["", "Auto", "as the system has them"], ["light", "Light", "light"], ["dark", "Dark", "dark"]];
  $("theme").addEventListener("click", () => {
    const now = themes.findIndex(([name]) => name === (document.documentElement.dataset.theme || ""));
    const [name, text, told] = themes[(now + 1) % themes.length];
    if (name) document.documentElement.dataset.theme = name;
    else delete document.documentElement.dataset.theme;
    $("theme").textContent = text;
    $("theme").setAttribute("aria-label", "Colours: " + told);
  });

  $("title").textContent = data.file;
  document.title = "vek report: " + data.file;
  overview();
  comparison();
  if (judged > 0) {
    classView.add();
    tree();
    confusions();
    reliability();
  }
  documentView.add();
  const term = (name, text) => [h("dt", {}, name), h("dd", {}, text)];
  $("main").append(h("footer", {}, h("details", {}, h("summary", {}, h("span", { class: "fold" }), "What the figures mean"), h("dl", {},
    term("Precision, recall, F1", "Of the documents that got a class, those that are filed in it; of those filed in it, those that got it; and 2 P R / (P + R). A document filed twice in a class counts twice."),
    term("Micro, macro", "From the sums over all classes; and the mean of the classes that some document is in or got, in which large and small ones count alike and what does not exist is 0."),
    term("Accuracy of a class", "Share of the documents for which it was neither missed nor wrong."),
    term("First class right, mean reciprocal rank", "Whether the best of all leaves is one of the document's own, whatever the thresholds; and the mean of 1 / rank of the best one of its own."),
    term("Average precision", "The mean of the precision at the score of each document of the class.")))));
})();
