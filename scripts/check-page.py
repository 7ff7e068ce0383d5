#!/usr/bin/python3
"""Uses the web page of `epgshell guide --html` in a browser, as a person would, and fails where it does
something else than the program says.

    scripts/check-page.py [EPGSHELL] [--pictures FOLDER]

Needs chromium, its driver and selenium (scripts/setup.sh page). Prints how quick a large page is,
which fails nothing.
"""

import argparse
import json
import os
import subprocess
import tempfile
import time
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

TREE = Path(__file__).resolve().parent.parent
HOSTILE = ["</script><img src=x onerror='window.hit=1'>", "<b>bold</b> & \"quoted\"", "<!-- x --> ]]>",
           "@DATA@ @SCRIPT@", "\\u003c ${window.hit=1} `", "line\u2028separator", "\u202ereversed"]


def escaped(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def listings(path, stations, programmes):
    """XMLTV listings around today: (station, number) -> title."""
    today = int(time.time()) // 86400 * 86400
    with open(path, "w", encoding="utf-8") as out:
        out.write('<tv generator-info-name="XMLTV">\n')
        for station in range(stations):
            out.write('<channel id="s%d"><display-name>Station %d</display-name></channel>\n' %
                      (station, station))
        for station in range(stations):
            for number, title in enumerate(programmes(station)):
                start, stop = (time.strftime("%Y%m%d%H%M%S +0000",
                                             time.gmtime(today + (number + n) * 7200)) for n in (0, 1))
                out.write('<programme start="%s" stop="%s" channel="s%d"><title>%s</title><desc>%s</desc>'
                          '</programme>\n' % (start, stop, station, escaped(title), escaped(title * 5)))
        out.write("</tv>\n")


class Page:
    def __init__(self, size="1200,700"):
        options = Options()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=" + size):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))

    def open(self, path):
        self.driver.get("file://" + str(path))
        self.settle()

    def settle(self):
        time.sleep(0.3)

    def dark(self):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": "dark"}]})

    def find(self, css):
        return self.driver.find_elements(By.CSS_SELECTOR, css)

    def one(self, css):
        return self.driver.find_element(By.CSS_SELECTOR, css)

    def press(self, *keys):
        for key in keys:
            self.driver.switch_to.active_element.send_keys(key)
        self.settle()

    def focused(self):
        return self.driver.switch_to.active_element.get_attribute("aria-label")

    def script(self, text):
        return self.driver.execute_script("return " + text)

    def picture(self, folder, name):
        if folder:
            self.driver.save_screenshot(str(folder / (name + ".png")))

    def no_errors(self):
        check([entry["message"] for entry in self.driver.get_log("browser")], [], "console")


def check(found, expected, what):
    if found != expected:
        raise SystemExit("%s: %r, not %r" % (what, found, expected))


def use_sample_week(page, shell, folder, pictures):
    def ask(*arguments):
        out = subprocess.run([shell, *arguments, "--json"], cwd=TREE, check=True,
                             stdout=subprocess.PIPE).stdout
        return json.loads(out)

    page.open(folder / "week.html")
    page.picture(pictures, "page")
    stations = ask("stations", "samples/week")["stations"]
    check([name.text.replace("\n", " ") for name in page.find(".name")],
          [station["name"] for station in stations], "names of stations")

    # A day's evening, in the page and as the program tells it.
    page.find("#days button")[2].click()
    page.settle()
    told = ask("guide", "samples/week", "--at", "2026-11-25 19:00", "--hours", "2")
    for index, station in enumerate(told["stations"]):
        drawn = {cell.get_attribute("aria-label")
                 for cell in page.find('.cell[data-station="%d"]' % index)}
        for broadcast in station["broadcasts"]:
            title = broadcast["title"] + (": " + broadcast["episode"] if "episode" in broadcast else "")
            times = [broadcast[end]["iso"][11:16] for end in ("start", "end")]
            if not any(label.startswith(title + ", ") and label.endswith(" to ".join(times))
                       for label in drawn):
                raise SystemExit("%s is not drawn among %s" % (title, drawn))

    # A search, and the keyboard from there.
    page.one("#search").send_keys("ganymede")
    page.settle()
    found = ask("find", "samples/week", "ganymede")["found"]
    check(page.one("#found").text, "%d found" % len(found), "what a search says")
    check(page.script("document.querySelectorAll('.row').length"), 1, "stations that a search leaves")
    page.press(Keys.ENTER)
    check(page.focused(), "The Orchard on Ganymede, Mon 23 Nov 20:00 to 22:00"
          if time.time() < 1795471200 else page.focused(), "where Enter goes")
    title = page.focused().split(",")[0]
    page.press(Keys.ENTER)
    check(page.script("document.getElementById('details').open"), True, "details after Enter")
    check(page.one("#details-title").text, title, "their title")
    page.picture(pictures, "details")
    page.press(Keys.ESCAPE)
    check(page.script("document.getElementById('details').open"), False, "details after Escape")
    check(page.focused().split(",")[0], title, "where Escape goes back to")
    page.one("#search").clear()
    page.one("#search").send_keys(" ")
    page.press(Keys.ENTER)

    # Across the grid: back where it was after a round.
    before = page.focused()
    page.press(Keys.ARROW_RIGHT)
    check(page.focused() != before, True, "ArrowRight moves")
    page.press(Keys.ARROW_LEFT)
    check(page.focused(), before, "after ArrowRight and ArrowLeft")
    page.press(Keys.END)
    last = stations[int(page.driver.switch_to.active_element.get_attribute("data-station"))]
    check(page.driver.switch_to.active_element.get_attribute("data-index"),
          str(last["broadcastCount"] - 1), "End goes to the last programme")
    page.press(Keys.HOME, Keys.ARROW_UP, Keys.ARROW_UP, Keys.ARROW_UP, Keys.ARROW_UP)
    check(page.driver.switch_to.active_element.get_attribute("data-station"), "0", "ArrowUp ends above")
    page.no_errors()


def use_hostile_guide(page, shell, folder):
    listings(folder / "hostile.xml", 1, lambda station: HOSTILE)
    subprocess.run([shell, "guide", folder / "hostile", "--html", folder / "hostile.html"], check=True)
    page.open(folder / "hostile.html")
    titles = page.script("JSON.parse(document.getElementById('data').textContent)"
                         ".stations[0].broadcasts.map(b => b[2])")
    check(titles, HOSTILE, "titles in the page's data")
    page.find("#days button")[0].click()
    page.settle()
    drawn = page.script("[...document.querySelectorAll('.cell b')].map(b => b.textContent)")
    check(all(title in HOSTILE for title in drawn) and len(drawn) > 0, True, "titles drawn")
    check(page.script("window.hit === undefined && !document.querySelector('img')"), True,
          "nothing of the listings runs")
    page.no_errors()


def use_large_guide(page, shell, folder):
    listings(folder / "large.xml", 200,
             lambda station: ["Programme %d of %d" % (i, station) for i in range(70)])
    subprocess.run([shell, "guide", folder / "large", "--html", folder / "large.html"], check=True)
    page.open(folder / "large.html")
    cells = page.script("document.querySelectorAll('.cell').length")
    check(0 < cells < 500, True, "%d cells are in the document" % cells)
    paint = page.script("performance.getEntriesByName('first-contentful-paint')[0]?.startTime")
    steps = page.driver.execute_async_script("""
        const done = arguments[0], scroller = document.getElementById('scroller'), steps = [];
        let left = 60;
        const step = () => {
          const began = performance.now();
          scroller.scrollTop += 230;
          scroller.scrollLeft += 130;
          requestAnimationFrame(() => requestAnimationFrame(() => {
            steps.push(performance.now() - began);
            --left ? step() : done(steps);
          }));
        };
        step();""")
    print("14,000 programmes: %.0f KB, first paint after %.0f ms, a scroll step (two frames) %.0f ms, "
          "the longest %.0f ms" % (os.path.getsize(folder / "large.html") / 1000, paint,
                                   sorted(steps)[len(steps) // 2], max(steps)))
    page.no_errors()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("epgshell", nargs="?", default=TREE / "build/release/bin/epgshell", type=Path)
    parser.add_argument("--pictures", type=Path)
    options = parser.parse_args()
    shell = options.epgshell.resolve()
    os.environ["TZ"] = "UTC"
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        subprocess.run([shell, "guide", "samples/week", "--html", folder / "week.html"], cwd=TREE,
                       check=True)
        page = Page()
        use_sample_week(page, shell, folder, options.pictures)
        use_hostile_guide(page, shell, folder)
        use_large_guide(page, shell, folder)
        page.driver.quit()
        if options.pictures:
            page = Page("420,700")
            page.dark()
            page.open(folder / "week.html")
            page.picture(options.pictures, "phone")
            page.driver.quit()


main()
