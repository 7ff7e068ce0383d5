#!/usr/bin/python3
"""Makes docs/guide.png, the sample week's first evening on a terminal and as the web page.

    scripts/make-picture.py

Needs the release build, chromium, its driver and selenium (scripts/setup.sh page).
"""

import html
import os
import subprocess
import tempfile
import time
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

TREE = Path(__file__).resolve().parent.parent
SHELL = TREE / "build/release/bin/epgshell"
SHEET = """<!DOCTYPE html><meta charset="utf-8"><style>
body { margin: 0; display: flex; gap: 12px; background: #d7dbe2; padding: 12px; }
pre { margin: 0; padding: 14px; background: #10141a; color: #e8ecf1; font: 13px/1.5 monospace;
      border-radius: 6px; }
iframe { border: 0; width: 960px; height: 496px; background: #fff; border-radius: 6px;
         transform: scale(.75); transform-origin: 0 0; margin: 0 -240px -124px 0; }
</style><pre>$ epgshell guide samples/week

%s</pre><iframe src="week.html"></iframe>"""

with tempfile.TemporaryDirectory() as name:
    folder = Path(name)
    settings = dict(os.environ, TZ="UTC", LC_ALL="C.UTF-8", COLUMNS="64")
    subprocess.run([SHELL, "guide", "samples/week", "--html", folder / "week.html"], cwd=TREE, check=True)
    grid = subprocess.run([SHELL, "guide", "samples/week", "--at", "2026-11-23 20:00", "--hours", "2"],
                          cwd=TREE, env=settings, check=True, stdout=subprocess.PIPE).stdout.decode()
    (folder / "sheet.html").write_text(SHEET % html.escape(grid), encoding="utf-8")
    options = Options()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                     "--allow-file-access-from-files", "--window-size=1310,536"):
        options.add_argument(argument)
    driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
    driver.get("file://%s" % (folder / "sheet.html"))
    driver.switch_to.frame(0)
    time.sleep(0.5)
    driver.find_element("css selector", "#days button").click()
    driver.execute_script("document.getElementById('scroller').scrollLeft += 220")
    time.sleep(0.5)
    driver.switch_to.default_content()
    driver.save_screenshot(str(TREE / "docs/guide.png"))
    driver.quit()
