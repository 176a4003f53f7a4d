"""The page of scrivel view in Chromium: its numbers are those of the other commands, it fetches nothing and says nothing
on the console, text of a log stays text, and keys reach everything.

    page_test.py PROGRAM LOGS    the program scrivel, and the folder with the logs of the example session

One browser serves all tests. Without Chromium, its driver or Selenium the tests are skipped (77). SCRIVEL_AXE names
axe.min.js, if it is there.
"""

import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

import expressions
import logs

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.keys import Keys
except ImportError:
    webdriver = None

SKIPPED = 77
PROGRAM = ""
SESSION = pathlib.Path()
FOLDER = pathlib.Path()
SOURCES = pathlib.Path(__file__).resolve().parents[2] / "tool" / "page"
MANY = 100_000
MORE = 230_000  # than a page holds
WINDOW = 20_000  # calls of these that are kept where one looks


def start_browser():
    options = webdriver.ChromeOptions()
    for argument in (
        "--headless --disable-gpu --disable-quic --no-first-run --disable-background-networking "
        f"--disable-component-update --disable-sync --window-size=1400,860 --user-data-dir={FOLDER / 'profile'}"
    ).split():
        options.add_argument(argument)
    if os.geteuid() == 0:  # the browser's sandbox is for those who are not
        options.add_argument("--no-sandbox")
    options.binary_location = shutil.which("chromium")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def scrivel(*arguments, status=0):
    outcome = subprocess.run([PROGRAM, *map(str, arguments)], cwd=FOLDER, capture_output=True, text=True, encoding="utf-8")
    assert status is None or outcome.returncode == status, f"{arguments}: {outcome.returncode} {outcome.stderr}"
    return outcome


def json_lines(*arguments):
    return [json.loads(line) for line in scrivel(*arguments, status=None).stdout.split("\n") if line]


def time_text(seconds):
    return "?" if seconds is None else f"{seconds:.6f}"


def duration_text(microseconds):
    size = round(microseconds)
    if size < 1000:
        return f"{size} µs"
    if size < 100_000:
        return f"{int(size / 10 + 0.5) / 100:.2f} ms"
    if size < 1_000_000:
        return f"{int(size / 1000 + 0.5)} ms"
    return f"{int(size / 10_000 + 0.5) / 100:.2f} s"


# What the page knows of its calls, in the words of scrivel calls --json.
CALLS_OF_THE_PAGE = """
const {model} = page, from = arguments[0], to = Math.min(arguments[1], model.count);
const tree = (items, names) => items.map(([name, value, count]) => Array.isArray(value)
  ? {name: names[name], children: tree(value, names)} : {name: names[name], value});
const seconds = (time) => Number.isNaN(time) ? null : time;
const calls = [];
for (let row = from; row < to; ++row) {
  const details = model.details(row), names = model.elements(row);
  calls.push({call: model.numberText(row), occurrence: model.odd.get(row)?.occurrence ?? 1,
    set_back: model.odd.get(row)?.clockSetBack ?? false, name: model.names[model.name[row]],
    thread: model.threadId(row), call_time: seconds(model.entered[row]), return_time: seconds(model.returned[row]),
    status: model.statuses[model.status[row]], parent: model.parent[row], parts: details.parts.length / 3, offset: details.parts[0],
    arguments: tree(details.args, names), results: tree(details.results, names),
    before: tree(details.before, names), lost: details.lost, log: model.logs[model.log[row]].data.log});
}
return JSON.stringify(calls);
"""


def as_page(call):
    """A line of scrivel calls --json, as the page knows it."""

    def microseconds(seconds):
        return None if seconds is None else round(seconds * 1e6)

    def tree(items):
        return [{"name": item["name"], "children": tree(item["children"])} if "children" in item else item for item in items]

    return {
        "call": str(call["call"]), "occurrence": call["occurrence"], "name": call["name"],
        "set_back": call.get("clock_set_back", False),
        "thread": "" if call["thread"] is None else str(call["thread"]),
        "call_time": microseconds(call["call_time"]), "return_time": microseconds(call["return_time"]),
        "status": call["status"] or "", "parent": call["parent"], "parts": call["parts"], "offset": call["offset"],
        "arguments": tree(call["arguments"]), "results": tree(call["results"]),
        "before": tree(call.get("before", [])), "lost": call.get("beginning_lost", False), "log": call["log"],
    }


class PageTest(unittest.TestCase):
    browser = None
    maxDiff = 2000

    @classmethod
    def setUpClass(cls):
        if PageTest.browser is None:
            PageTest.browser = start_browser()
            PageTest.browser.get("about:blank")

    def setUp(self):
        self.started = time.monotonic()
        self.console()
        self.requests()

    def tearDown(self):
        """Whatever a test does, the page says nothing on the console and fetches nothing."""
        print(f"{time.monotonic() - self.started:.1f} s ", end="", flush=True)
        self.assertEqual(self.console(), [])
        self.assertEqual([url for url in self.requests() if not url.startswith(("file://" + str(FOLDER), "chrome://"))], [])

    def console(self):
        return [entry["message"] for entry in self.browser.get_log("browser")]

    def requests(self):
        messages = (json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance"))
        return [message["params"]["request"]["url"] for message in messages if message["method"] == "Network.requestWillBeSent"]

    def open(self, *names, fragment="", options=()):
        scrivel("view", *names, "-o", "page.html", "--force", *options)
        self.browser.get("about:blank")
        self.browser.get(f"file://{FOLDER}/page.html{fragment}")
        self.settle()

    def settle(self):
        """Waits for two pictures: what was asked for is drawn then."""
        self.browser.execute_async_script("const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => done()));")

    def run_js(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def keys(self, *typed):
        for key in typed:
            self.browser.switch_to.active_element.send_keys(key)
        self.settle()

    def selected(self):
        return self.run_js("return page.model.title(page.selected)")

    def text(self, selector):
        return self.run_js("return document.querySelector(arguments[0]).textContent", selector)

    def calls(self, count):
        found = []
        for at in range(0, count, 20_000):
            found += json.loads(self.run_js(CALLS_OF_THE_PAGE, at, at + 20_000))
        return found

    def look(self, width, height, dark=False):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
        self.settle()


    def compare_durations(self, name):
        shown = self.run_js("return page.model.logs[0].data.durations")
        rows = {row["name"]: row for row in json_lines("stats", "--json", name) if row.get("by") == "name"}
        self.assertEqual({one["name"] for one in shown}, set(rows))
        for one in shown:
            row = rows[one["name"]]
            for ours in ("calls", "failed", "open"):
                self.assertEqual(one[ours], row[ours])
            if one["timed"]:
                for ours in ("total", "median", "p95", "max"):
                    # Of very many calls a median is known to three digits.
                    self.assertAlmostEqual(one[ours], round(row[ours] * 1e6), delta=0 if one["exact"] else one[ours] / 100, msg=ours)
                self.assertEqual(sum(count for _, count in one["bins"]), one["timed"])

    def compare_state(self, name, row, number):
        state = json_lines("state", "--json", "--at", number, name)
        registers = {}
        memory = {}
        for item in state:
            if item["kind"] == "register" and item["value"] is not None:
                registers[item["name"]] = [int(item["value"], 16), item["call"], item["stale"]]
            elif item["kind"] == "memory":
                for i in range(0, len(item["value"]), 2):
                    memory[int(item["address"], 16) + i // 2] = [item["value"][i : i + 2], item["call"], item["stale"]]
        shown = self.run_js(
            """
            const row = arguments[0], {model, state} = page, {data} = model.logs[0], registers = {}, memory = [];
            const call = (access) => parseInt(access.number);
            for (const [i, [name]] of data.registers.entries()) {
              const known = state.registerBefore(row, i)?.touch;
              if (known) registers[name] = [Number(BigInt('0x' + known.bytes)), call(known), state.isStale(known, row)];
            }
            for (const {space, from, to} of state.places(model.logs[0]))
              for (const [i, known] of state.memoryBefore(row, space, from, Number(to - from)).entries())
                if (known) memory.push([Number(from) + i, [known.byte, call(known.touch), state.isStale(known.touch, row)]]);
            return {registers, memory};
            """,
            row,
        )
        self.assertEqual(shown["registers"], registers, f"{name} before {number}")
        self.assertEqual({address: known for address, known in shown["memory"]}, memory, f"{name} before {number}")


class Numbers(PageTest):
    LOGS = [
        ["crash.xml"], ["run.xml"], ["connection.xml"], ["run.xml", "connection.xml"], ["torn.xml"], ["flipped.xml"],
        ["strange.xml"], ["overlapping.xml"], ["hostile.xml"], ["empty.xml"], ["many.xml"],
    ]

    def test_every_call_is_that_of_calls_json(self):
        for names in self.LOGS:
            with self.subTest(names=names):
                self.open(*names)
                expected = [as_page(call) for call in json_lines("calls", "--json", *names)]
                shown = self.calls(len(expected) + 1)
                if len(names) > 1:  # the page has the connection first
                    expected.sort(key=lambda call: call["log"])
                self.assertEqual(len(shown), len(expected))
                for ours, theirs in zip(shown, expected):
                    if ours != theirs:
                        self.assertEqual(ours, theirs)

    def test_the_table_shows_them(self):
        for names in (["crash.xml"], ["torn.xml"], ["some.xml"]):
            calls = [call for call in json_lines("calls", "--json", *names)]
            self.open(*names)
            for start in range(0, len(calls), max(20, len(calls) // 5)):
                self.run_js("page.table.grid.scrollTop = arguments[0] * page.table.rowHeight", start)
                self.settle()
                rows = self.run_js(
                    "return [...document.querySelectorAll('#rows .row')].map((row) => [Number(row.dataset.row), "
                    "...['number', 'time', 'took', 'name', 'status'].map((name) => row.querySelector('.' + name).textContent)])"
                )
                self.assertGreater(len(rows), 5)
                self.assertLess(len(rows), 100)
                for row, number, entered, took, name, status in rows:
                    call = calls[row]
                    returned = call["return_time"]
                    self.assertEqual(number, str(call["call"]))
                    self.assertEqual(entered, time_text(call["call_time"]))
                    self.assertEqual(took, "" if returned is None else duration_text((returned - call["call_time"]) * 1e6))
                    self.assertEqual(name.strip(" └"), call["name"])
                    short = (call["status"] or "").replace("CADI_STATUS_", "")
                    self.assertEqual(status.strip("✕◼ "), "had not returned" if returned is None else short)

    def test_the_heading_is_that_of_the_summary(self):
        for names in self.LOGS[:-1]:
            for name in names:
                [summary] = json_lines("--json", f"./{name}")
                self.open(name)
                data = self.run_js("const {data} = page.model.logs[0]; return {calls: data.calls, failed: data.failed, open: data.open, threads: data.threads.length, seconds: data.last, whole: data.whole}")
                expected = {key: summary[key] for key in ("calls", "failed", "open", "threads", "whole")}
                expected["seconds"] = None if summary["seconds"] is None else round(summary["seconds"] * 1e6)
                self.assertEqual(data, expected)
                heading = self.text("#logs")
                self.assertIn(f"{summary['calls']:,} call", heading)
                if summary["failed"]:
                    self.assertIn(f"{summary['failed']} failed", heading)
                self.assertEqual(self.run_js("return !document.getElementById('card').hidden"), summary["open"] > 0)
                if summary["open"]:
                    self.assertIn(f"call {summary['open_calls'][0]['call']} {summary['verdict']}", heading)

    def test_durations_are_those_of_stats(self):
        for name in ("run.xml", "some.xml"):
            self.open(name)
            self.compare_durations(name)

    def test_a_column_of_the_histogram_leaves_as_many_calls_as_it_counts(self):
        self.open("some.xml")
        self.keys("4")
        columns = self.run_js("return [...document.querySelectorAll('button.bin')].map((bin) => Number(bin.title.replace(/,/g, '').split(':')[0]))")
        self.assertGreater(len(columns), 8)
        for i in range(0, len(columns), 3):
            self.run_js("document.querySelectorAll('button.bin')[arguments[0]].click()", i)
            self.assertEqual(self.run_js("return page.table.rows.length"), columns[i])

    def test_registers_and_memory_are_those_of_state(self):
        for name, step in (("crash.xml", 1), ("run.xml", 5), ("some.xml", 97)):
            calls = json_lines("calls", "--json", name)
            self.open(name)
            for row in range(0, len(calls), step):
                self.compare_state(name, row, calls[row]["call"])

    def test_the_panels_show_what_a_call_changed(self):
        self.open("run.xml", fragment="#call=60")
        self.keys("3")
        self.assertIn("3000  00 00 00 00 ··", self.text("#memory"))
        self.assertIn("This call writes 4 bytes here. 1 byte changed. Known from #53 (wrote)", self.text("#memory"))
        self.assertEqual(self.run_js("return [...document.querySelectorAll('#memory pre .changed')].map((byte) => byte.textContent)"), ["00"])
        self.keys("2", "j")  # 61 writes the program counter
        self.assertEqual(self.text("#registers tr.now"), "pc0x3000 writes 0x3000wrote #54 target ran since")
        self.run_js("page.select(page.model.find('68'))")
        self.assertEqual(self.run_js("return document.querySelectorAll('#registers canvas').length"), 3)


class LeftOut(PageTest):
    """Of a log with more calls than a page holds."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        (FOLDER / "more.xml").write_text(logs.many(MORE, seed=3, slow=1000), encoding="utf-8")
        cls.lines = {}
        cls.failed, cls.open_ones, cls.took = set(), set(), {}
        for line in scrivel("calls", "--json", "more.xml").stdout.splitlines():
            call = json.loads(line)
            number = call["call"]
            cls.lines[number] = line
            if call["return_time"] is None:
                cls.open_ones.add(number)
            else:
                cls.took[number] = round((call["return_time"] - call["call_time"]) * 1e6)
                if call["status"] != "CADI_STATUS_OK":
                    cls.failed.add(number)

    @classmethod
    def tearDownClass(cls):
        (FOLDER / "more.xml").unlink()

    def compare_kept(self, near):
        """The page has the calls that it should, and says of each what scrivel says."""
        left = self.run_js("return page.model.logs[0].data.left_out")
        slower = left["slower"]
        # A thousand of the slowest, but for those that took as long as the fastest of them.
        self.assertLessEqual(sum(took > slower for took in self.took.values()), 1000)
        self.assertGreaterEqual(sum(took >= slower for took in self.took.values()), 1000)
        slow = {number for number, took in self.took.items() if took > slower}
        self.assertGreater(len(slow - near), 100)
        kept = self.failed | self.open_ones | slow | near
        shown = self.calls(len(kept) + 1)
        self.assertEqual({int(call["call"]) for call in shown}, kept)
        self.assertEqual(len(shown), len(kept))
        for ours in shown:
            theirs = as_page(json.loads(self.lines[int(ours["call"])]))
            if ours != theirs:
                self.assertEqual(ours, theirs)
        said = self.text("#left-out")
        self.assertIn(f"run-4242 has {MORE:,} calls; this page has {len(kept):,} of them: all {len(self.failed)} that failed, those that had not returned, ", said)
        self.assertIn(f"those that took longer than {duration_text(slower)}, calls {min(near):,} to {max(near):,}. ", said)
        self.assertIn("scrivel view --around N more.xml -o page.html", said)

    def test_what_failed_hangs_or_is_slow_is_kept_and_the_end(self):
        self.open("more.xml")
        self.compare_kept(set(range(MORE - WINDOW + 1, MORE + 1)))
        self.assertEqual(self.selected(), f"{MORE}")

    def test_what_is_around_a_call_is_kept(self):
        number = 100_000
        self.open("more.xml", options=["--around", number], fragment=f"#call={number}")
        self.compare_kept(set(range(number - WINDOW // 2, number + WINDOW // 2 + 1)))
        self.assertEqual(self.selected(), f"{number}")

    def test_numbers_tell_of_all(self):
        self.open("more.xml")
        summary = json_lines("--json", "more.xml")[0]
        data = self.run_js("const {data} = page.model.logs[0]; return {calls: data.calls, failed: data.failed, open: data.open}")
        self.assertEqual(data, {ours: summary[ours] for ours in data})
        self.assertEqual(data, {"calls": MORE, "failed": len(self.failed), "open": len(self.open_ones)})
        strip = self.run_js(
            "const {stretches} = page.model.logs[0].data, sum = (name) => stretches[name].reduce((all, one) => all + one, 0);"
            "return {calls: sum('calls'), failed: sum('failed'), open: sum('open')}"
        )
        self.assertEqual(strip, data)
        self.compare_durations("more.xml")

    def test_a_filter_finds_all_that_failed_or_was_slow(self):
        self.open("more.xml")
        for typed, expected in (("failed", len(self.failed)), ("not returned", 1), ("took > 900us", sum(took > 900 for took in self.took.values()))):
            self.keys("/", typed)
            # A large table is filtered when nothing more is typed.
            self.browser.execute_async_script("const done = arguments[0]; setTimeout(done, 400);")
            self.assertEqual(self.text("#count").split(" of ")[0], f"{expected:,}", typed)
            self.keys(Keys.ESCAPE, Keys.ESCAPE)  # forgets it, and leaves the field

    def test_registers_and_memory_are_those_of_state_around_a_call(self):
        number = 100_000
        self.open("more.xml", options=["--around", number])
        for asked in (number - WINDOW // 2 + 200, number, number + WINDOW // 2):
            row = self.run_js("return page.model.find(arguments[0], 0)", str(asked))
            self.compare_state("more.xml", row, asked)


class Filter(PageTest):
    def rows_of_page(self, text):
        return self.run_js(
            "try { const test = makeFilter(page.model, arguments[0]), found = []; for (let row = 0; row < page.model.count; ++row) "
            "if (test(row)) found.push(page.model.title(row)); return found; } catch (error) { if (!(error instanceof FilterError)) throw error; return error.message; }",
            text,
        )

    def compare(self, text, arguments, name):
        outcome = scrivel("calls", "--json", *arguments, name, status=None)
        if outcome.returncode == 2:
            expected = outcome.stderr.removeprefix("scrivel: ").strip()
        else:
            calls = [json.loads(line) for line in outcome.stdout.split("\n") if line]
            expected = [str(call["call"]) + (f"#{call['occurrence']}" if call["occurrence"] > 1 else "") for call in calls]
        shown = self.rows_of_page(text)
        if isinstance(expected, str) and isinstance(shown, str):
            self.assertTrue(expected.startswith(shown), f"{text!r}: {shown!r} instead of {expected!r}")
        else:
            self.assertEqual(shown, expected, text)

    def test_expressions_are_those_of_the_command_line(self):
        for name in ("run.xml", "strange.xml"):
            self.open(name)
            for text in expressions.EXPRESSIONS:
                self.compare(text, [f"--where={text}"], name)

    def test_random_expressions_are_those_of_the_command_line(self):
        self.open("crash.xml")
        for text in expressions.random_expressions(150):
            self.compare(text, [f"--where={text}"], "crash.xml")

    def test_options_are_those_of_the_command_line(self):
        self.open("crash.xml")
        for options in expressions.OPTIONS:
            self.compare(" ".join(f"'{word}'" if " " in word else word for word in options), options, "crash.xml")

    def test_it_is_typed_and_its_error_is_told(self):
        self.open("crash.xml")
        self.keys("/", "name ~ Mem")
        self.assertEqual(self.text("#count"), f"{len(json_lines('calls', '--json', '-w', 'name ~ Mem', 'crash.xml'))} of 68")
        self.keys(" and")
        self.assertEqual(self.text("#filter-error"), "a field is missing at the end")
        self.keys(Keys.ESCAPE)
        self.assertEqual(self.text("#count"), "68 of 68")


class Text(PageTest):
    def test_markup_of_a_log_stays_text(self):
        self.open("hostile.xml")
        evil = "</script><script>hacked=1</script><!--<script><img src=x onerror=hacked=1>"
        for row in range(6):
            self.run_js("page.select(arguments[0])", row)
            for tab in "1234":
                self.keys(tab)
            self.keys("1")
            if row in (0, 1, 2, 5):
                self.assertIn(evil, self.text("#call"), row)
            self.assertIsNone(self.run_js("return window.hacked ?? null"))
            self.assertEqual(self.run_js("return [document.querySelectorAll('img, iframe, object, link, base').length, document.scripts.length]"), [0, 1])
        self.assertIn(evil, self.text("#logs"))
        self.assertIn("\\x00", self.text("#call"))

    def test_no_file_of_the_page_makes_markup_of_text(self):
        for source in SOURCES.glob("*.js"):
            for word in ("innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval(", "new Function", "DOMParser", "createContextualFragment"):
                self.assertNotIn(word, source.read_text(encoding="utf-8"), source.name)

    def test_a_script_that_is_not_the_pages_does_not_run(self):
        self.open("crash.xml")
        self.run_js("const script = document.createElement('script'); script.textContent = 'window.hacked = 1'; document.body.append(script);")
        self.assertIsNone(self.run_js("return window.hacked ?? null"))
        self.assertIn("Content Security Policy", " ".join(self.console()))


class Keyboard(PageTest):
    def test_keys_go_through_the_calls(self):
        self.open("run.xml")
        numbers = [str(call["call"]) for call in json_lines("calls", "--json", "run.xml")]
        failed = [str(call["call"]) for call in json_lines("calls", "--json", "-f", "run.xml")]
        self.assertEqual(self.selected(), failed[0])
        self.keys("e")
        self.assertEqual(self.selected(), failed[1])
        self.keys("E", "E")
        self.assertEqual(self.selected(), failed[-1])
        self.keys(Keys.HOME)
        self.assertEqual(self.selected(), numbers[0])
        self.keys("j", "j", "k", Keys.ARROW_DOWN, Keys.ARROW_DOWN, Keys.ARROW_UP)
        self.assertEqual(self.selected(), numbers[2])
        self.keys(Keys.END)
        self.assertEqual(self.selected(), numbers[-1])
        self.assertEqual(self.run_js("return document.getElementById('calls').getAttribute('aria-activedescendant')"), f"call-{len(numbers) - 1}")

    def test_keys_reach_the_timeline_the_panels_and_the_filter(self):
        self.open("run.xml")
        seen = "return [page.timeline.from, page.timeline.to]"
        whole = self.run_js(seen)
        self.keys("w", "w")
        near = self.run_js(seen)
        self.assertLess(near[1] - near[0], (whole[1] - whole[0]) * 0.5)
        self.keys("d")
        self.assertGreater(self.run_js(seen)[0], near[0])
        self.keys("a", "s", "0")
        self.assertEqual(self.run_js(seen), whole)
        self.keys("t")
        self.assertEqual(self.run_js("return page.timeline.byTime"), True)
        for key, panel in zip("1234", ("call", "registers", "memory", "durations")):
            self.keys(key)
            self.assertEqual(self.run_js("return [...document.querySelectorAll('.panel')].filter((panel) => !panel.hidden).map((panel) => panel.id)"), [panel])
        self.keys("/", "failed", Keys.ENTER)
        self.assertEqual(self.run_js("return document.activeElement.id"), "calls")
        self.keys("?")
        self.assertTrue(self.run_js("return document.getElementById('help').open"))
        self.keys(Keys.ESCAPE, "p")
        self.assertFalse(self.run_js("return document.getElementById('help').open"))

    def test_tab_reaches_every_control(self):
        self.open("crash.xml")
        self.run_js("document.activeElement.blur()")
        reached = set()
        body = self.browser.find_element("tag name", "body")
        body.send_keys(Keys.TAB)
        for _ in range(60):
            reached.add(self.run_js("return document.activeElement.id"))
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
        for control in ("skip", "help-button", "theme", "by-call", "by-time", "zoom-in", "zoom-out", "fit", "filter", "failed", "open", "calls", "tab-call", "call"):
            self.assertIn(control, reached)


class Places(PageTest):
    def test_a_fragment_opens_a_call(self):
        self.open("run.xml", fragment="#call=52")
        self.assertEqual(self.selected(), "52")
        self.assertIn("PermissionDenied", self.text("#call"))
        self.open("strange.xml", fragment="#call=7%232")
        self.assertEqual(self.selected(), "7#2")
        self.open("run.xml", "connection.xml", fragment="#log=0&call=2")
        self.assertEqual(self.run_js("return [page.model.log[page.selected], page.model.title(page.selected)]"), [0, "2"])
        self.keys("j")
        self.assertTrue(self.browser.current_url.endswith("#log=0&call=3"))

    def test_the_page_opens_at_what_killed_the_process(self):
        self.open("crash.xml")
        self.assertEqual(self.selected(), "68")
        self.assertIn("0x40000000 is in block Timer", self.text("#card"))
        self.assertIn("had not returned when the log ended", self.text("#call"))
        self.assertIn("scrivel show 68 crash.xml", self.text("#call"))

    def test_a_click_on_the_timeline_chooses_the_call_that_is_there(self):
        for axis in ("by-call", "by-time"):
            self.open("crash.xml")
            self.run_js("document.getElementById(arguments[0]).click()", axis)
            self.settle()
            for row in (0, 17, 40, 67):
                self.run_js("page.select(0); page.timeline.show(page.timeline.begin(arguments[0]) - 3, page.timeline.begin(arguments[0]) + 3);", row)
                self.settle()
                x, y = self.run_js(
                    "const {timeline} = page, row = arguments[0], rect = timeline.canvas.getBoundingClientRect(); let top = 22;"
                    "for (const lane of timeline.lanes) { if (lane.rows.includes(row)) break; top += lane.height * 20 + 8; }"
                    "return [rect.left + (timeline.x(timeline.begin(row)) + timeline.x(Math.min(timeline.end(row), timeline.begin(row) + 1))) / 2, rect.top + top + timeline.rowInLane[row] * 20 + 9]",
                    row,
                )
                for kind in ("mousePressed", "mouseReleased"):
                    self.browser.execute_cdp_cmd("Input.dispatchMouseEvent", {"type": kind, "x": x, "y": y, "button": "left", "clickCount": 1})
                self.assertEqual(self.run_js("return page.selected"), row, axis)

    def test_idle_time_is_folded(self):
        self.open("overlapping.xml")
        self.keys("t")
        self.assertEqual(self.run_js("return page.timeline.folds.length"), 0)  # a call was open all the time
        self.open("strange.xml")
        self.keys("t")
        self.assertGreater(self.run_js("return page.timeline.folds.length"), 0)
        self.assertLess(self.run_js("return page.timeline.timeLength"), 1e6)

    def test_overlapping_calls_stand_side_by_side(self):
        for name in ("overlapping.xml", "chain.xml", "crash.xml"):
            self.open(name)
            lanes, places, ends = self.run_js("const {timeline} = page; return [timeline.lanes.map((lane) => lane.rows), [...timeline.rowInLane], [...timeline.callEnd]]")
            self.assertLessEqual(max(places), 9)
            for rows in lanes:
                for i, first in enumerate(rows):
                    for second in rows[i + 1 :]:
                        if ends[first] > second:
                            self.assertNotEqual(places[first], places[second], f"{name}: {first} and {second}")


class ManyCalls(PageTest):
    def cpu(self):
        """Seconds that the browser and all its processes have taken."""
        parents = {}
        taken = {}
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                fields = (process / "stat").read_text().rsplit(")", 1)[1].split()
            except OSError:
                continue
            parents[int(process.name)] = int(fields[1])
            taken[int(process.name)] = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        own = self.browser.service.process.pid

        def is_ours(process):
            while process in parents and process != own:
                process = parents[process]
            return process == own

        return sum(seconds for process, seconds in taken.items() if is_ours(process))

    def test_a_hundred_thousand_are_drawn_with_few_rectangles_and_rows(self):
        scrivel("view", "many.xml", "-o", "page.html", "--force")
        self.browser.get("about:blank")
        before = self.cpu()
        self.browser.get(f"file://{FOLDER}/page.html")
        self.settle()
        ready = self.cpu() - before
        self.run_js(
            "window.rectangles = 0; const fillRect = CanvasRenderingContext2D.prototype.fillRect;"
            "CanvasRenderingContext2D.prototype.fillRect = function (...place) { ++window.rectangles; return fillRect.apply(this, place); };"
            "page.timeline.drawNow(); "
        )
        # Each row of a lane has no more than one a pixel, and there is room for marks and the strip.
        height, width = self.run_js("return [page.timeline.lanes.reduce((sum, lane) => sum + lane.height, 0), page.timeline.canvas.clientWidth]")
        self.assertLess(self.run_js("return window.rectangles"), (3 * height + 4) * width)
        self.assertLess(self.run_js("return document.querySelectorAll('#rows .row').length"), 100)
        times = self.browser.execute_async_script(
            "const done = arguments[0], {timeline} = page; timeline.drawings = []; timeline.fit(); let step = 0;"
            "const next = () => { if (++step > 240) { done(timeline.drawings.slice(2)); return; }"
            "timeline.zoom(step % 80 < 40 ? 0.8 : 1.25, (step % 7) / 7); requestAnimationFrame(next); }; requestAnimationFrame(next);"
        )
        times.sort()
        size = (FOLDER / "page.html").stat().st_size
        print(
            f"{MANY} calls: {size / 1e6:.1f} MB, ready after {ready:.2f} s of CPU time of all of the browser; {len(times)} drawings while zooming: "
            f"median {times[len(times) // 2]:.1f} ms, 95 % {times[len(times) * 95 // 100]:.1f} ms",
            flush=True,
        )
        self.assertGreater(len(times), 200)


class Access(PageTest):
    def test_axe_finds_nothing(self):
        axe = os.environ.get("SCRIVEL_AXE", "")
        if not os.path.exists(axe):
            self.skipTest("SCRIVEL_AXE names no axe.min.js")
        source = pathlib.Path(axe).read_text(encoding="utf-8")
        # In the dark only colours are others.
        for name, width, height, dark in (("crash.xml", 1400, 860, False), ("strange.xml", 390, 844, False), ("crash.xml", 1400, 860, True)):
            self.look(width, height, dark)
            self.open(name)
            self.run_js(source)
            for tab in "1234":
                self.keys(tab)
                found = self.browser.execute_async_script(
                    "const [colours, done] = arguments; axe.run(document, {resultTypes: ['violations'], ...(colours ? {runOnly: ['color-contrast']} : {})})"
                    ".then((result) => done(result.violations.map((one) => [one.id, one.help, one.nodes.map((node) => node.html.slice(0, 120) + ' ' + node.failureSummary).slice(0, 3)])));",
                    dark,
                )
                self.assertEqual(found, [], f"{name}, panel {tab}, {width} wide, {'dark' if dark else 'light'}")
        self.look(1400, 860)

    def test_the_page_is_no_wider_than_its_window(self):
        for width in (390, 760, 761, 1400):
            self.look(width, 844)
            for name in ("crash.xml", "hostile.xml"):
                self.open(name)
                for tab in "1234":
                    self.keys(tab)
                    self.assertLessEqual(self.run_js("return document.documentElement.scrollWidth"), width, f"{name} {tab}")
        self.look(1400, 860)

    def test_the_table_tells_its_rows(self):
        self.open("crash.xml")
        self.assertEqual(self.run_js("return document.getElementById('calls').getAttribute('aria-rowcount')"), "69")
        self.assertEqual(self.run_js("return document.getElementById('call-67').getAttribute('aria-rowindex')"), "69")
        self.assertEqual(self.run_js("return document.getElementById('call-67').getAttribute('aria-selected')"), "true")

    def test_on_paper_there_is_a_table_of_all_calls(self):
        self.open("crash.xml")
        self.run_js("window.dispatchEvent(new Event('beforeprint'))")
        rows = self.run_js("return [...document.querySelectorAll('#printed tbody tr')].map((row) => row.cells[0].textContent)")
        self.assertEqual(rows, [str(number) for number in range(1, 69)])
        self.browser.execute_cdp_cmd("Page.printToPDF", {})
        self.run_js("window.dispatchEvent(new Event('afterprint'))")
        self.assertEqual(self.text("#printed"), "")


def make_logs():
    stored = {"crash.xml": "crash-4242.xml", "run.xml": "run-4243.xml", "connection.xml": "connection-4243.xml"}
    for name, source in stored.items():
        shutil.copyfile(SESSION / source, FOLDER / name)
    crash = (FOLDER / "crash.xml").read_bytes()
    (FOLDER / "torn.xml").write_bytes(crash[: len(crash) // 2])
    (FOLDER / "flipped.xml").write_bytes(crash[:30000] + b"<" + crash[30001:])
    texts = {"strange.xml": logs.strange(), "overlapping.xml": logs.overlapping(), "chain.xml": logs.chain(40), "hostile.xml": logs.hostile(), "empty.xml": logs.document(""), "some.xml": logs.many(2000, seed=2), "many.xml": logs.many(MANY)}
    for name, text in texts.items():
        (FOLDER / name).write_text(text, encoding="utf-8")


def main():
    global PROGRAM, SESSION, FOLDER
    missing = [name for name in ("chromium", "chromedriver") if shutil.which(name) is None]
    if webdriver is None:
        missing.append("Selenium for Python")
    if missing:
        print(f"skipped: there is no {' and no '.join(missing)}; scripts/test-page installs what the page is tested with")
        return SKIPPED
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    SESSION = pathlib.Path(sys.argv.pop(1)).absolute()
    with tempfile.TemporaryDirectory() as folder:
        FOLDER = pathlib.Path(folder).resolve()
        make_logs()
        started = time.monotonic()
        try:
            program = unittest.main(exit=False, verbosity=2)
        finally:
            if PageTest.browser is not None:
                PageTest.browser.quit()
        print(f"one browser for all, {time.monotonic() - started:.0f} s")
        return 0 if program.result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
