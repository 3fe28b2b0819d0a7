"""A headless Chromium that a test drives through its pipe for developers."""
import base64
import json
import os
import subprocess
import tempfile


class Browser:
    """Opens a page, a file or an address, and fails on whatever it asks for from elsewhere, and on errors of its script."""

    def __init__(self, chromium, page, options=()):
        url = page if '://' in page else 'file://' + page
        self.origin = url if url.startswith('file:') else '/'.join(url.split('/')[:3]) + '/'
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)  # processes of the browser may still write
        command_read, self.commands = os.pipe()
        self.answers, answer_write = os.pipe()

        def take_pipes():
            copies = [os.dup(command_read), os.dup(answer_write)]
            os.dup2(copies[0], 3)
            os.dup2(copies[1], 4)
            os.set_inheritable(3, True)
            os.set_inheritable(4, True)

        self.process = subprocess.Popen(
            [chromium, '--headless', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', '--remote-debugging-pipe',
             '--user-data-dir=' + self.folder.name, '--window-size=1400,1000', '--hide-scrollbars', *options, 'about:blank'],
            preexec_fn=take_pipes, close_fds=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(command_read)
        os.close(answer_write)
        self.number, self.rest, self.events, self.session = 0, b'', [], None
        target = next(t for t in self.call('Target.getTargets')['targetInfos'] if t['type'] == 'page')
        self.session = self.call('Target.attachToTarget', targetId=target['targetId'], flatten=True)['sessionId']
        for domain in ('Page', 'Runtime', 'Network', 'Log'):
            self.call(domain + '.enable')
        self.call('Page.navigate', url=url)
        self.wait('document.body && document.body.dataset.ready === "yes"')

    def call(self, method, **parameters):
        self.number += 1
        message = {'id': self.number, 'method': method, 'params': parameters}
        if self.session:
            message['sessionId'] = self.session
        os.write(self.commands, json.dumps(message).encode() + b'\0')
        while True:
            while b'\0' not in self.rest:
                piece = os.read(self.answers, 1 << 20)
                assert piece, 'the browser has ended'
                self.rest += piece
            answer, self.rest = self.rest.split(b'\0', 1)
            answer = json.loads(answer)
            if answer.get('id') == self.number:
                assert 'result' in answer, answer
                return answer['result']
            self.events.append(answer)

    def value(self, expression):
        answer = self.call('Runtime.evaluate', expression=expression, returnByValue=True, awaitPromise=True)
        assert 'exceptionDetails' not in answer, answer
        return answer['result'].get('value')

    def wait(self, expression):
        self.value('new Promise((done) => { const look = () => (' + expression + ') ? done(1) : setTimeout(look, 20); look(); })')

    def mouse(self, kind, x, y, **more):
        self.call('Input.dispatchMouseEvent', type=kind, x=x, y=y, **more)

    def click(self, x, y):
        for kind in ('mousePressed', 'mouseReleased'):
            self.mouse(kind, x, y, button='left', clickCount=1)

    def screenshot(self, file):
        with open(file, 'wb') as out:
            out.write(base64.b64decode(self.call('Page.captureScreenshot', format='png')['data']))

    def problems(self):
        """What the page asked for from elsewhere, and its errors."""
        found = []
        for event in self.events:
            parameters = event.get('params', {})
            if event.get('method') == 'Network.requestWillBeSent':
                url = parameters['request']['url']
                if url.split(':')[0] not in ('file', 'data', 'blob', 'about') and not url.startswith(self.origin):
                    found.append(url)
            elif event.get('method') in ('Runtime.exceptionThrown', 'Log.entryAdded'):
                found.append(json.dumps(parameters))
        return found

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.commands)
        os.close(self.answers)
        self.folder.cleanup()
