"""Opens report pages in headless Chromium, as a user does.

usage: report_test.py BUILD-DIRECTORY SOURCE-DIRECTORY. Exit status 77: no browser is installed.
"""

import hashlib
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest

try:
    from selenium import webdriver
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    missing = [program for program in ('chromium', 'chromedriver') if not shutil.which(program)]
except ImportError:
    missing = ['python3-selenium']
if missing:
    print('Skipped: not installed:', *missing)
    sys.exit(1 if os.environ.get('CI') else 77)

build, source = (os.path.abspath(path) for path in sys.argv[1:3])
REPORT = f'{build}/vrkt_wlan_udi_log_report'


def words(*values):
    return struct.pack(f'<{len(values)}I', *(value & 0xFFFFFFFF for value in values))


HEADER = words(0x1289ABEF, 6, 14 << 24 | 5 << 16 | 12)


def time_ref(seconds):
    return words(0x13572467, 0, 0, 4, seconds)


def strength(ms, rssi, vif=1):  # mlme_rssi_report_ind
    signal = struct.pack('<H8xH6shIII', 0x2312, vif, b'\x0a\x0b\x0c\x0d\x0e\x0f', rssi, 0, 0, 0)
    return words(0x13572468, ms, len(signal), len(signal)) + signal


def hours(*times):  # in hours after the clock reference, 10 reports a minute apart each
    return b''.join(strength(int(hour * 3600000) + i * 60000, -50 - i) for hour in times for i in range(10))


class Report(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.TemporaryDirectory()
        os.chdir(cls.directory.name)
        options = webdriver.ChromeOptions()
        for option in ('--headless=new', '--no-sandbox', '--disable-gpu', '--window-size=1900,1400'):
            options.add_argument(option)
        options.set_capability('goog:loggingPrefs', {'browser': 'ALL'})
        cls.browser = webdriver.Chrome(options=options)
        shutil.copy(f'{source}/examples/session.udi', '.')

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.directory.cleanup()

    def make(self, *logs, status=0, zone='UTC0', stdin=None):
        made = subprocess.run([REPORT, *logs], input=stdin, capture_output=True, env={**os.environ, 'TZ': zone})
        self.assertEqual(made.returncode, status, made.stderr)
        return made.stdout.decode()

    def open(self, *logs, **options):
        page = self.make(*logs, **options)
        with open('page.html', 'w', encoding='utf-8') as file:
            file.write(page)
        self.browser.get('about:blank')
        self.browser.get(f'file://{os.getcwd()}/page.html')
        self.draw()
        self.assertEqual(self.browser.get_log('browser'), [])
        return json.loads(re.search(r'id="data">\n(.*?)</script>', page, re.DOTALL)[1])

    def draw(self):
        self.browser.execute_async_script('requestAnimationFrame(() => setTimeout(arguments[0], 50))')

    def text(self, name):
        return self.browser.find_element(By.ID, name).text

    def canvases(self):
        return self.browser.execute_script("return [...document.querySelectorAll('canvas')].map((c) => c.toDataURL())")

    # How many pixels of a chart have exactly this colour.
    def count(self, chart, red, green, blue):
        return self.browser.execute_script(
            """const canvas = document.querySelector(`#${arguments[0]} canvas`);
            const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext('2d', {willReadFrequently: true});
            copy.drawImage(canvas, 0, 0);
            const bytes = copy.getImageData(0, 0, canvas.width, canvas.height).data;
            let n = 0;
            for (let i = 0; i < bytes.length; i += 4) {
              if (bytes[i] === arguments[1] && bytes[i + 1] === arguments[2] && bytes[i + 2] === arguments[3]) ++n;
            }
            return n;""", chart, red, green, blue)

    # Moves to a place of a chart: parts of the width and height of its plot.
    def move(self, chart, x, y):
        over = self.browser.find_element(By.CSS_SELECTOR, f'#{chart} .u-over')
        return ActionChains(self.browser, duration=20).move_to_element_with_offset(
            over, int((x - 0.5) * over.size['width']), int((y - 0.5) * over.size['height']))

    def test_charts_and_pointer(self):
        data = self.open('session.udi')
        red = (0xC2, 0x26, 0x1C)
        for chart, colour, least in (('lanes', red, 50), ('lost', red, 500), ('answers', red, 10),
                                     ('traffic', (0, 0x72, 0xB2), 300), ('traffic', (0xE6, 0x9F, 0), 500)):
            self.assertGreater(self.count(chart, *colour), least, chart)
        swatches = [self.browser.execute_script('return getComputedStyle(arguments[0]).backgroundColor', swatch)
                    for swatch in self.browser.find_elements(By.CSS_SELECTOR, '#peers .swatch')]
        for swatch in swatches:
            self.assertGreater(self.count('lanes', *map(int, re.findall(r'\d+', swatch))), 500)
        # The second link is from 9.06 s to 42 s of 66.5 s.
        self.move('lanes', 0.3, 0.5).click().perform()
        self.assertIn('2026/06/01-07:00:09.060 record 50\nlink to 0a:0b:0c:0d:0e:1f on vif 1, 33 s', self.text('tip'))
        self.assertIn('ended by mlme_disconnected_ind: timeout', self.text('tip'))
        self.assertIn('frame.number == 50', self.text('picked'))
        sql = self.browser.find_elements(By.CSS_SELECTOR, '#picked code')[1].text
        rows = subprocess.run(['bash', '-c', f'PATH={build}:$PATH TZ=UTC0; {sql}'], capture_output=True).stdout
        self.assertIn(b'50|2026/06/01-07:00:09.060|mlme_roamed_ind', rows)
        # Drag: all charts, and the page's address.
        before = self.canvases()
        self.move('answers', 0.2, 0.5).click_and_hold().perform()
        self.move('answers', 0.4, 0.5).release().perform()
        self.draw()
        after = self.canvases()
        self.assertTrue(all(a != b for a, b in zip(before, after)))
        first, last = map(int, self.browser.current_url.split('#')[1].split('-'))
        self.assertAlmostEqual(last - first, 13400, delta=300)
        # The address opens the same range; double click shows all.
        self.browser.get('about:blank')
        self.browser.get(f'file://{os.getcwd()}/page.html#{first}-{last}')
        self.draw()
        self.assertIn('07:00:13', self.text('range'))
        self.assertLess(abs(self.canvases()[3] != after[3]), 2)
        self.move('traffic', 0.5, 0.5).double_click().perform()
        self.draw()
        self.assertEqual(self.text('range'), '2026/06/01-07:00:00.000 to 2026/06/01-07:01:06.500, 1 min 7 s')
        # A row, by the keyboard, too.
        self.browser.find_elements(By.CSS_SELECTOR, '#slowest tbody tr')[1].click()
        self.draw()
        self.assertIn('record 44', self.text('picked'))
        self.assertNotIn('07:01:06.500', self.text('range'))
        ActionChains(self.browser).send_keys('0').perform()
        self.draw()
        self.assertIn('07:01:06.500', self.text('range'))
        self.assertEqual(self.browser.get_log('browser'), [])
        self.assertEqual(data['logs'][0][1], 76)

    def test_numbers_and_secrets(self):
        with open('hour.udi', 'wb') as log:
            subprocess.run([f'{build}/tools/make_log', 'session', '60000'], stdout=log, check=True)
        for log in ('session.udi', 'hour.udi'):
            data = self.open(log)
            with open(log, 'rb') as file:
                bytes_of_log = file.read()
            sql = """SELECT (SELECT json_array(sum(sent), sum(received), sum(bytes), sum(not_sent)) FROM traffic),
              (SELECT json_object('link', (SELECT count(*) FROM links), 'connect', (SELECT count(*) FROM connections),
                'scan', (SELECT count(*) FROM scans), 'failure', (SELECT count(*) FROM failures WHERE signal <> 'ma_unitdata_cfm'),
                'answer', (SELECT count(*) FROM exchanges), 'strength', (SELECT count(*) FROM signal_strength))),
              (SELECT json_group_array(json_array(signal, n, worst)) FROM (
                SELECT signal, count(*) AS n, max(ms) AS worst FROM exchanges GROUP BY signal)),
              (SELECT json_group_array(n) FROM (SELECT count(*) AS n FROM failures GROUP BY signal, failure, vif))"""
            asked = subprocess.run([f'{build}/vrkt_wlan_udi_log_query', sql, log], capture_output=True, check=True)
            sums, counts, signals, groups = map(json.loads, asked.stdout.decode().strip().split('|'))
            self.assertEqual(data['sums'], sums)
            self.assertEqual(data['all_counts'], counts)
            self.assertEqual(sorted([row[0], row[1], row[5]] for row in data['exchanges'] if row[1]), signals)
            self.assertEqual(sorted(row[3] for row in data['groups']), sorted(groups))
            # Frames and keys: no eight bytes of the log, as digits or as they are. Addresses have six.
            text = json.dumps(data).lower().replace(':', '')
            found = {digits for digits in re.findall('[0-9a-f]{16,}', text) if bytes.fromhex(digits[:16]) in bytes_of_log}
            self.assertEqual(found, set())
            self.assertNotIn('686f6d65', text)
            self.assertNotIn('"home"', text)

    def test_odd_logs(self):
        with open('session.udi', 'rb') as file:
            good = file.read()
        many = HEADER + time_ref(1000) + b''.join(strength(i * 10, -40 - i % 50, i % 100) for i in range(3000))
        logs = {
            'empty.udi': (b'', 0, '0 records'),
            'header.udi': (HEADER, 0, '0 records'),
            'cut.udi': (good[:1300], 2, 'cut'),
            'damaged.udi': (good[:500] + b'x' * 100, 2, 'Bad Magic number'),
            '<script>alert(1)<script>\'"&amp;.udi': (good, 0, '76 records'),
            'backwards.udi': (HEADER + time_ref(90000) + hours(5, 1), 0, '20 records'),
            'early.udi': (HEADER + strength(5, -50) + time_ref(1780297200) + hours(0), 0, '11 records'),
            'many.udi': (many, 0, '3,000 records'),
        }
        for name, (content, status, summary) in logs.items():
            with open(name, 'wb') as file:
                file.write(content)
            self.open(name, status=status)
            self.assertIn(summary, self.text('summary'), name)
            self.assertEqual(self.text('title'), name)
            if status:
                self.assertGreater(self.count('lanes', 0xC2, 0x26, 0x1C), 20, name)
        self.assertIn('of 100 interfaces', self.text('notes'))
        self.open('early.udi')  # 1970, the hours without records, 2026
        self.assertIn('1970/01/01', self.text('summary'))
        self.open('backwards.udi')
        self.assertIn('the time runs backwards', self.text('findings'))
        self.open('session.udi', 'backwards.udi')
        self.assertIn('session.udi, backwards.udi', self.text('title'))
        # Standard input; no log; a log that is none.
        self.open(stdin=good)
        self.assertIn('76 records', self.text('summary'))
        with open('text.udi', 'w', encoding='utf-8') as file:
            file.write('This is no log.')
        self.assertEqual(self.make('text.udi', status=2), '')
        self.assertEqual(self.make('nowhere.udi', status=2), '')

    # Stamps are those of the tool, also in hours that occur twice.
    def test_daylight_saving(self):
        with open('october.udi', 'wb') as file:
            file.write(HEADER + time_ref(1792886400) + hours(0, 0.5, 1, 1.5))  # 2026-10-25 00:00 UTC
        self.open('october.udi', zone='CET-1CEST,M3.5.0,M10.5.0/3')
        self.assertIn('2026/10/25-02:00:00.000 to 2026/10/25-02:39:00.000 (1 h 39 min)', self.text('summary'))

    def test_library(self):
        with open(f'{source}/report/third_party/README.md', encoding='utf-8') as file:
            expected = re.search('`([0-9a-f]{64})`', file.read())[1]
        with open(f'{source}/report/third_party/uPlot.iife.min.js', 'rb') as file:
            self.assertEqual(hashlib.sha256(file.read()).hexdigest(), expected)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1])
