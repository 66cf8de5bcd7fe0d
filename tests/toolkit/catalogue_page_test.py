"""The catalogue as a page, in a headless Chromium. Needs the Debian packages chromium-driver and python3-selenium
(scripts/install_dependencies.sh browser).

usage: catalogue_page_test.py LIST_CATALOGUE
"""
import base64
import collections
import http.server
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import threading
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

PROGRAM = sys.argv.pop()


def printed(form):
    return subprocess.run([PROGRAM, form], check=True, capture_output=True, text=True).stdout


CATALOGUE = json.loads(printed("json"))
OWNERS = {**CATALOGUE["classes"], "scene": {**CATALOGUE["scene"], "slots": {}}}
FIELDS = [field for owner in OWNERS.values() for group in owner["groups"].values() for field in group["fields"]]
SLOTS = [slot for owner in OWNERS.values() for slot in owner["slots"]]


def numbers(value):
    return [number for each in value for number in numbers(each)] if isinstance(value, list) else [value]


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        file = pathlib.Path(cls.folder.name) / "catalogue.html"
        file.write_text(printed("html"))
        cls.url = file.as_uri()
        options = webdriver.ChromeOptions()
        options.add_argument("--headless=new")
        options.add_argument("--disable-dev-shm-usage")
        options.add_argument(f"--user-data-dir={cls.folder.name}/profile")
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def setUp(self):
        self.command("Emulation.setScriptExecutionDisabled", value=False)
        self.media()
        self.size(1400, 900)
        self.logs("performance")
        self.logs("browser")
        self.open()

    def tearDown(self):
        # The browser complains of nothing in the page.
        self.assertEqual(self.logs("browser"), [])

    def open(self, fragment=""):
        self.browser.get("about:blank")
        self.browser.get(self.url + ("#" + fragment if fragment else ""))

    def logs(self, kind):
        return self.browser.get_log(kind)

    def command(self, name, **arguments):
        return self.browser.execute_cdp_cmd(name, arguments)

    def media(self, kind="", scheme="light"):
        self.command("Emulation.setEmulatedMedia", media=kind,
                     features=[{"name": "prefers-color-scheme", "value": scheme}])

    def size(self, width, height, mobile=False):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=mobile)

    def run_script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def find(self, selector):
        return self.browser.find_element("css selector", selector)

    def press(self, *keys):
        actions = webdriver.ActionChains(self.browser, duration=0)
        for key in keys:
            actions.send_keys(key)
        actions.perform()

    def wait(self, condition):
        WebDriverWait(self.browser, 60).until(lambda _: condition())

    def visible_rows(self):
        return self.run_script("return [...document.querySelectorAll('tr.field')]"
                               ".filter((row) => row.getClientRects().length).map((row) => row.id)")

    def search(self, words):
        self.find("#search").clear()
        self.find("#search").send_keys(words)
        return self.visible_rows()

    def in_view(self, identifier):
        """Whether an element is in the window, and not below the bar at its top."""
        return self.run_script(
            "const box = document.getElementById(arguments[0]).getBoundingClientRect();"
            "const top = document.querySelector('.top').getBoundingClientRect().bottom;"
            "return box.top >= top - 1 && box.bottom <= innerHeight + 1", identifier)

    def active(self):
        return self.run_script("return (document.activeElement.closest('tr.field') || {}).id || null")


class Content(Page):
    def test_has_a_row_for_each_field_and_each_slot_with_a_link_to_itself(self):
        rows = self.run_script("return [...document.querySelectorAll('tr.field')].map("
                               "(row) => [row.id, row.querySelector('td.name a').getAttribute('href')])")
        self.assertEqual(len(rows), len(FIELDS) + len(SLOTS))
        for identifier, link in rows:
            self.assertEqual(link, "#" + identifier)
            self.assertRegex(identifier, r"^[A-Za-z0-9_/-]+$")

    def test_has_each_name_once_that_a_link_leads_to(self):
        names = self.run_script("return [...document.querySelectorAll('[id]')].map((each) => each.id)")
        self.assertEqual([name for name, count in collections.Counter(names).items() if count > 1], [])
        links = self.run_script("return [...document.querySelectorAll('a')].map((each) => each.getAttribute('href'))")
        self.assertGreater(len(links), len(FIELDS))
        for link in links:
            self.assertEqual(link[0], "#")
            self.assertIn(link[1:], names)

    def test_lists_classes_and_groups_in_the_side_bar(self):
        listed = self.run_script("return [...document.querySelectorAll('nav > ul > li')].map((item) => "
                                 "[...item.querySelectorAll('a')].map((link) => link.textContent))")
        expected = [[name, *owner["groups"]] for name, owner in CATALOGUE["classes"].items()]
        expected.append(["The scene as a whole", *CATALOGUE["scene"]["groups"]])
        self.assertEqual(listed, expected)

    def test_tells_type_default_limits_unit_offset_and_description(self):
        cells = self.run_script("return [...document.getElementById(arguments[0]).cells].map((cell) => cell.innerText)",
                                "ImageTask/Rasterizer/ambient_occlusion/edge_depth_threshold")
        self.assertEqual(cells[1:4], ["float", "0.01 m", "from 0.0; soft to 1.0 m"])
        self.assertIn("edge_depth_threshold", cells[0])
        self.assertIn("Edge depth threshold", cells[0])
        self.assertEqual(cells[4], "16")
        self.assertIn("Edge detection distance", cells[5])
        self.assertIn("@logscale", cells[5])

    def test_draws_the_limits_of_each_field_that_has_some(self):
        drawn = self.run_script("return [...document.querySelectorAll('tr.field')]"
                                ".filter((row) => row.querySelector('svg.range')).length")
        limited = [field for field in FIELDS
                   if any(all(not isinstance(each, (str, bool)) for each in numbers(field[key]))
                          for key in ("min", "max", "soft_min", "soft_max") if key in field)]
        self.assertEqual(drawn, len(limited))
        # The place of the default between the limits.
        for identifier, part in (("Camera/General/shutter_open", 0.0), ("Camera/Backplate/image/border_alpha", 1.0),
                                 ("ImageTask/Accumulation/reconstruction_gauss_filter/alpha", (1.7 - 0.1) / (3.0 - 0.1))):
            place = self.run_script(
                "const row = document.getElementById(arguments[0]);"
                "const bar = row.querySelector('rect.hard').getBoundingClientRect();"
                "const dot = row.querySelector('circle.default').getBoundingClientRect();"
                "return (dot.left + dot.width / 2 - bar.left) / bar.width", identifier)
            self.assertAlmostEqual(place, part, delta=0.02)


class Requests(Page):
    def test_requests_nothing_but_the_page(self):
        self.search("camera")
        self.find("nav a[href='#Camera/General']").click()
        requested = []
        for entry in self.logs("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                requested.append(message["params"]["request"]["url"])
        self.assertIn(self.url, requested)
        self.assertEqual([url for url in requested if url != self.url and url != "about:blank"], [])

    def test_may_not_request_anything(self):
        asked = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                asked.append(self.path)
                self.send_response(200)
                self.send_header("Access-Control-Allow-Origin", "*")
                self.end_headers()

            def log_message(self, *_):
                pass

        server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        address = f"http://127.0.0.1:{server.server_port}/"
        try:
            blocked = self.browser.execute_async_script("""
                const [address, done] = arguments;
                const blocked = [];
                document.addEventListener('securitypolicyviolation', (event) => {
                  blocked.push(event.effectiveDirective);
                  if (blocked.length === 5) done(blocked);
                });
                fetch(address + 'fetch').catch(() => {});
                const add = (tag, key, name) => {
                  const element = document.createElement(tag);
                  element[key] = address + name;
                  if (tag === 'link') element.rel = 'stylesheet';
                  document.head.append(element);
                };
                add('img', 'src', 'image');
                add('script', 'src', 'script');
                add('link', 'href', 'style');
                const inline = document.createElement('script');
                inline.textContent = 'document.title = "broken"';
                document.head.append(inline);
                setTimeout(() => done(blocked), 5000);""", address)
        finally:
            server.shutdown()
            server.server_close()
        self.assertEqual(sorted(blocked),
                         ["connect-src", "img-src", "script-src-elem", "script-src-elem", "style-src-elem"])
        self.assertEqual(asked, [])
        self.assertNotEqual(self.browser.title, "broken")
        self.logs("browser")


class Search(Page):
    def test_finds_by_name_label_description_and_constructor_as_one_types(self):
        everything = len(self.visible_rows())
        self.assertEqual(self.search("near_dist"), ["Camera/General/near_distance"])
        self.assertEqual(self.search("NEAR DISTANCE OFFSET"), ["Camera/General/near_distance"])
        self.assertIn("Camera/General/shutter_open", self.search("motion blur"))
        self.assertIn("Camera/Backplate/image/wrapmode/u", self.search("mirror"))
        self.assertIn("Light/slots/transformationGroup", self.search("light transformationgroup"))
        self.assertEqual(set(self.search("camera background red")), {"Camera/Background/red"})
        self.press(Keys.ESCAPE)
        self.assertEqual(len(self.visible_rows()), everything)

    def test_tells_how_many_fields_it_found(self):
        total = len(FIELDS) + len(SLOTS)
        self.assertEqual(self.find("#found").text, f"{total} fields")
        self.search("near_distance")
        self.assertEqual(self.find("#found").text, f"1 of {total} fields")
        self.assertEqual(self.find("#found").get_attribute("aria-live"), "polite")

    def test_leaves_only_the_classes_and_groups_of_what_it_found(self):
        self.search("near_distance")
        shown = self.run_script("return [...document.querySelectorAll('nav a, h2, h3')]"
                                ".filter((each) => each.getClientRects().length).map((each) => each.textContent)")
        self.assertEqual(shown, ["Camera", "General", "Camera", "General"])

    def test_marks_what_it_found(self):
        self.search("near_distance")
        self.assertEqual(self.run_script("return [...CSS.highlights.get('found')].map(String)"), ["near_distance"])
        self.press(Keys.ESCAPE)
        self.assertFalse(self.run_script("return CSS.highlights.has('found')"))

    def test_says_that_it_found_nothing(self):
        self.assertFalse(self.find("#nothing").is_displayed())
        self.assertEqual(self.search("no such words"), [])
        self.assertTrue(self.find("#nothing").is_displayed())

    def test_takes_any_text_as_text(self):
        for words in ("<b>", "(", "\\", "%", "near[", "'\""):
            self.search(words)
            self.assertIn(f"of {len(FIELDS) + len(SLOTS)} fields", self.find("#found").text)


class Links(Page):
    def test_lead_to_a_field_when_the_page_is_opened(self):
        self.open("Shape/Ambient-occlusion/tmax_multiplier")
        self.assertEqual(self.run_script("return document.querySelector(':target').id"),
                         "Shape/Ambient-occlusion/tmax_multiplier")
        self.wait(lambda: self.in_view("Shape/Ambient-occlusion/tmax_multiplier"))

    def test_lead_to_the_last_field_and_to_the_groups_of_the_scene(self):
        for name in (self.visible_rows()[-1], "scene/Raytracer/ray_epsilon"):
            self.open(name)
            self.wait(lambda name=name: self.in_view(name))

    def test_are_put_into_the_address_by_a_click_on_a_name(self):
        self.search("near_distance")
        self.find("tr[id='Camera/General/near_distance'] td.name a").click()
        self.assertTrue(self.browser.current_url.endswith("#Camera/General/near_distance"))

    def test_to_a_field_that_the_search_hides_end_the_search(self):
        self.search("near_distance")
        self.run_script("location.hash = '#Light/General/matte'")
        self.wait(lambda: self.in_view("Light/General/matte"))
        self.assertEqual(self.find("#search").get_attribute("value"), "")

    def test_to_nothing_leave_the_page_as_it_is(self):
        for name in ("nothing", "%", "%E0%A4%A", "main"):
            self.open(name)
            self.assertEqual(len(self.visible_rows()), len(FIELDS) + len(SLOTS))

    def test_of_the_side_bar_follow_the_reader(self):
        self.open("Light/Visibility")
        current = "return [...document.querySelectorAll('nav a[aria-current]')].map((link) => link.hash)"
        self.wait(lambda: self.run_script(current) == ["#Light/Visibility"])
        self.assertTrue(self.run_script(
            "const link = document.querySelector('nav a[aria-current]').getBoundingClientRect();"
            "const nav = document.getElementById('nav').getBoundingClientRect();"
            "return link.top >= nav.top && link.bottom <= nav.bottom"))


class Keyboard(Page):
    def test_searches_and_goes_to_what_was_found(self):
        self.press("/")
        self.assertEqual(self.run_script("return document.activeElement.id"), "search")
        self.press("shutter_")
        self.assertEqual(self.find("#search").get_attribute("value"), "shutter_")
        self.press(Keys.ENTER)
        self.assertEqual(self.active(), "Camera/General/shutter_open")
        self.press("j")
        self.assertEqual(self.active(), "Camera/General/shutter_close")
        self.press("k")
        self.assertEqual(self.active(), "Camera/General/shutter_open")
        self.press(Keys.ENTER)
        self.assertTrue(self.browser.current_url.endswith("#Camera/General/shutter_open"))
        self.press(Keys.ESCAPE)
        self.assertEqual(self.find("#search").get_attribute("value"), "")
        self.assertEqual(len(self.visible_rows()), len(FIELDS) + len(SLOTS))

    def test_goes_through_the_fields_from_where_the_reader_is(self):
        self.open("Camera/Background/red")
        self.press("j")
        self.assertEqual(self.active(), "Camera/Background/green")
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.active(), "Camera/Background/blue")
        self.press(Keys.ARROW_UP, Keys.ARROW_UP)
        self.assertEqual(self.active(), "Camera/Background/red")
        self.assertTrue(self.in_view("Camera/Background/red"))

    def test_stops_at_the_ends(self):
        self.press("j")
        first = self.active()
        self.press("k", "k")
        self.assertEqual(self.active(), first)

    def test_reaches_the_catalogue_past_the_side_bar(self):
        self.press(Keys.TAB)
        self.assertEqual(self.run_script("return document.activeElement.className"), "skip")
        self.assertTrue(self.run_script("return document.activeElement.getBoundingClientRect().top >= 0"))
        self.press(Keys.ENTER, Keys.TAB)
        self.assertTrue(self.run_script("return Boolean(document.activeElement.closest('main'))"))

    def test_shows_where_it_is(self):
        self.press("j")
        outline = self.run_script("return getComputedStyle(document.activeElement).outlineStyle")
        self.assertEqual(outline, "solid")

    def test_leaves_the_keys_of_the_browser_alone(self):
        self.browser.switch_to.active_element
        webdriver.ActionChains(self.browser).key_down(Keys.CONTROL).send_keys("j").key_up(Keys.CONTROL).perform()
        self.assertIsNone(self.active())


class Looks(Page):
    def colours(self):
        return self.run_script("""
            const luminance = (colour) => {
              const [r, g, b] = colour.match(/[\\d.]+/g).map(Number).map((c) => c / 255)
                .map((c) => (c <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
              return 0.2126 * r + 0.7152 * g + 0.0722 * b;
            };
            const page = luminance(getComputedStyle(document.body).backgroundColor);
            const found = {};
            for (const name of ['main', '.facts', '.label', '.limits', 'td.about p', 'nav a', '.chip', '.choices .code',
                                '.choices .words', '.inside', 'td.type', 'td.offset', '.legend', 'h1 small', '.keys p']) {
              let ground = document.querySelector(name);
              const text = luminance(getComputedStyle(ground).color);
              while (/rgba.* 0\\)/.test(getComputedStyle(ground).backgroundColor)) ground = ground.parentElement;
              const behind = luminance(getComputedStyle(ground).backgroundColor);
              found[name] = (Math.max(text, behind) + 0.05) / (Math.min(text, behind) + 0.05);
            }
            return [page, found];""")

    def test_are_light_or_dark_as_the_reader_has_it_with_text_that_can_be_read(self):
        light, contrasts = self.colours()
        self.assertGreater(light, 0.8)
        self.media(scheme="dark")
        dark, dark_contrasts = self.colours()
        self.assertLess(dark, 0.05)
        for scheme, all_contrasts in (("light", contrasts), ("dark", dark_contrasts)):
            for name, contrast in all_contrasts.items():
                self.assertGreaterEqual(contrast, 4.5, (scheme, name))

    def test_fit_every_width(self):
        for width in (320, 390, 600, 768, 769, 1000, 1216, 1217, 1920):
            self.size(width, 800, width < 768)
            self.open()
            wide = self.run_script("return document.documentElement.scrollWidth - document.documentElement.clientWidth")
            self.assertEqual(wide, 0, width)
            cut = self.run_script("""
                return [...document.querySelectorAll('main td, main li, nav a')].filter((each) =>
                  each.getClientRects().length && each.getBoundingClientRect().right > innerWidth + 1).length""")
            self.assertEqual(cut, 0, width)

    def test_have_the_side_bar_behind_a_button_on_a_phone(self):
        self.size(390, 844, True)
        self.open()
        self.assertFalse(self.find("#nav").is_displayed())
        self.find("#menu").click()
        self.assertTrue(self.find("#nav").is_displayed())
        self.assertEqual(self.find("#menu").get_attribute("aria-expanded"), "true")
        self.press(Keys.ESCAPE)
        self.assertFalse(self.find("#nav").is_displayed())
        self.find("#menu").click()
        self.find("nav a[href='#Camera/General']").click()
        self.assertFalse(self.find("#nav").is_displayed())
        self.assertEqual(self.find("#menu").get_attribute("aria-expanded"), "false")
        self.wait(lambda: self.run_script(
            "const top = document.getElementById('Camera/General').getBoundingClientRect().top;"
            "return top > 0 && top < 200"))
        self.assertEqual(self.search("near_distance"), ["Camera/General/near_distance"])

    def test_print_the_catalogue_without_what_is_for_a_screen(self):
        self.media("print")
        for name in (".top", "#nav", ".legend"):
            self.assertFalse(self.find(name).is_displayed(), name)
        self.assertEqual(len(self.visible_rows()), len(FIELDS) + len(SLOTS))
        self.media()
        document = base64.b64decode(self.command("Page.printToPDF")["data"])
        self.assertTrue(document.startswith(b"%PDF"))
        self.assertGreater(document.count(b"/Type /Page\n"), 10)

    def test_need_no_script(self):
        self.command("Emulation.setScriptExecutionDisabled", value=True)
        self.open()
        self.command("Emulation.setScriptExecutionDisabled", value=False)
        self.assertEqual(len(self.visible_rows()), len(FIELDS) + len(SLOTS))
        self.assertTrue(self.find("#nav").is_displayed())
        self.assertFalse(self.find("#search").is_displayed())


del Page
if __name__ == "__main__":
    unittest.main()
