#!/usr/bin/env python3
"""Drives `pbhost lsp` over its standard input and output. Usage: lsp_session.py PBHOST"""
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

PBHOST = os.path.abspath(sys.argv[1])
KERNEL = """<languageVersion : 1.0;>
kernel Test < namespace : "n"; vendor : "v"; version : 1; >
{
    parameter float gain < defaultValue: 1.0; minValue: 0.0; maxValue: 4.0; >;
    input image4 src;
    output pixel4 dst;
    void evaluatePixel() {
        /* \U0001d11e */ dst = sampleNearest(src, outCoord()) * gain;
    }
}
"""
GRAPH = f"""<graph name="G"><inputImage type="image4" name="in"/><outputImage type="pixel4" name="out"/>
<kernel><![CDATA[{KERNEL}]]></kernel>
<node id="a" name="Test"><evaluateParameters>void evaluateParameters() {{ a::gain = 1.0; }}</evaluateParameters></node>
<connect fromImage="in" toNode="a" toInput="src"/><connect fromNode="a" fromOutput="dst" toImage="out"/></graph>
"""


class Client:
    def __init__(self, *arguments):
        self.process = subprocess.Popen([PBHOST, "lsp", *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE)
        self.last_id = 0
        self.notes = []

    def send(self, message):
        body = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.process.stdin.flush()

    def receive(self):
        length = 0
        while (line := self.process.stdout.readline().strip()):
            name, value = line.split(b":")
            length = int(value) if name == b"Content-Length" else length
        assert length, self.process.stderr.read()
        return json.loads(self.process.stdout.read(length))

    def answer(self, method, parameters):
        self.last_id += 1
        self.send({"id": self.last_id, "method": method, "params": parameters})
        while (message := self.receive()).get("id") != self.last_id:
            self.notes.append(message)
        return message

    def request(self, method, parameters):
        message = self.answer(method, parameters)
        assert "error" not in message, message
        return message["result"]

    def error(self, method, parameters):
        return self.answer(method, parameters)["error"]["code"]

    def notify(self, method, parameters):
        self.send({"method": method, "params": parameters})

    def start(self):
        capabilities = self.request("initialize", {"processId": None, "rootUri": None, "capabilities": {}})
        assert capabilities["capabilities"]["hoverProvider"]
        self.notify("initialized", {})
        return self

    def open(self, uri, text, version=1):
        self.notify("textDocument/didOpen", {"textDocument": {"uri": uri, "languageId": "pixelbender",
                                                              "version": version, "text": text}})

    def change(self, uri, text, version):
        self.notify("textDocument/didChange", {"textDocument": {"uri": uri, "version": version},
                                               "contentChanges": [{"text": text}]})

    def diagnostics(self, uri):
        while True:
            message = self.notes.pop(0) if self.notes else self.receive()
            if message.get("method") == "textDocument/publishDiagnostics" and message["params"]["uri"] == uri:
                return message["params"]

    def at(self, uri, method, text, word, offset=0):
        before = text[:text.index(word) + offset]
        line = before.count("\n")
        character = len(before[before.rfind("\n") + 1:].encode("utf-16-le")) // 2
        return self.request("textDocument/" + method, {"textDocument": {"uri": uri},
                                                       "position": {"line": line, "character": character}})

    def stop(self):
        self.request("shutdown", None)
        self.notify("exit", None)
        assert self.process.wait(10) == 0, self.process.stderr.read()


def marked(text, diagnostic):
    start, end = diagnostic["range"]["start"], diagnostic["range"]["end"]
    line = text.splitlines()[start["line"]].encode("utf-16-le")
    return line[2 * start["character"]:2 * end["character"]].decode("utf-16-le")


def test_diagnostics(client, uri, text):
    client.open(uri, text)
    assert client.diagnostics(uri)["diagnostics"] == []
    # Typing: only the last text is checked.
    wrong = text.replace("sampleNearest(", "sampleNeares(")
    for version in range(2, 12):
        client.change(uri, text + " " * version, version)
    client.change(uri, wrong, 12)
    published = client.diagnostics(uri)
    assert published["version"] == 12, published
    [found] = published["diagnostics"]
    assert found["severity"] == 1 and found["code"] == "compile-error", found
    assert marked(wrong, found) == "sampleNeares", found
    client.change(uri, text.replace("defaultValue", "defaultVale"), 13)
    [found] = client.diagnostics(uri)["diagnostics"]
    assert found["severity"] == 2 and found["code"] == "unknown-key", found
    client.change(uri, text, 14)
    assert client.diagnostics(uri)["diagnostics"] == []


def labels(result):
    return {item["label"] for item in result["items"]}


def test_features(client, uri, text):
    hover = client.at(uri, "hover", text, "gain;", 2)
    assert "parameter float gain" in hover["contents"]["value"], hover
    assert "- maxValue: `4.0`" in hover["contents"]["value"], hover
    assert "float4 sampleNearest(" in client.at(uri, "hover", text, "sampleNearest")["contents"]["value"]
    assert client.at(uri, "hover", text, "{\n") is None
    assert {"sampleNearest", "float3", "gain", "src", "evaluatePixel"} <= labels(
        client.at(uri, "completion", text, "dst = "))
    keys = labels(client.at(uri, "completion", text, "minValue"))
    assert "aeUIControl" in keys and "sampleNearest" not in keys, keys
    hint = text.replace("maxValue: 4.0;", "aeUIControl: \"\";")
    client.change(uri, hint, 20)
    assert "aePopup" in labels(client.at(uri, "completion", hint, "aeUIControl: \"", 14))
    client.change(uri, text, 21)
    symbols = client.request("textDocument/documentSymbol", {"textDocument": {"uri": uri}})
    assert symbols[0]["name"] == "Test"
    assert [child["name"] for child in symbols[0]["children"]] == ["gain", "src", "dst", "evaluatePixel"]
    assert all(marked(text, {"range": child["selectionRange"]}) == child["name"]
               for child in symbols[0]["children"])
    if uri.endswith(".pbg"):
        assert symbols[1]["name"] == "a", symbols
    assert client.error("textDocument/hover", {"textDocument": {"uri": uri},
                                               "position": {"line": 1e30, "character": 0}}) == -32602


def test_protocol(client):
    assert client.error("nothing/known", {}) == -32601
    assert client.error("textDocument/hover", {}) == -32602
    assert client.error("textDocument/hover", {"textDocument": {"uri": "file:///no.pbk"},
                                               "position": {"line": 0, "character": 0}}) == -32602
    client.notify("$/setTrace", {"value": "off"})
    body = b"{"
    client.process.stdin.write(b"Content-Length: 1\r\n\r\n" + body)
    client.process.stdin.flush()
    while "error" not in (message := client.receive()):
        pass
    assert message["error"]["code"] == -32700, message
    uri = "file:///closed.pbk"
    client.open(uri, "")
    assert client.diagnostics(uri)["diagnostics"][0]["code"] == "no-kernel"
    client.notify("textDocument/didClose", {"textDocument": {"uri": uri}})
    assert client.diagnostics(uri)["diagnostics"] == []


def children(process):
    return [int(pid) for pid in pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()]


def slow():
    macros = "".join(f"#define M{i + 1} M{i} + M{i}\n" for i in range(24))
    return KERNEL.replace("{\n", "{\n#define M0 1.0\n" + macros, 1).replace("* gain", "* (M24)")


def test_crash(client):
    """The compiling process crashes, or takes too long; the server goes on."""
    uri = "file:///slow.pbk"
    client.open(uri, slow())
    server = children(client.process.pid)[0]
    time.sleep(0.3)
    [worker] = children(server)
    os.kill(worker, signal.SIGSEGV)
    assert client.diagnostics(uri)["diagnostics"][0]["code"] == "driver-crash"
    client.change(uri, KERNEL, 2)
    assert client.diagnostics(uri)["diagnostics"] == []
    impatient = Client("--timeout", "0.3").start()
    impatient.open(uri, slow())
    assert impatient.diagnostics(uri)["diagnostics"][0]["code"] == "driver-timeout"
    impatient.change(uri, slow() + " ", 2)
    assert impatient.diagnostics(uri)["diagnostics"][0]["code"] == "driver-timeout"
    impatient.stop()


def test_ends():
    """The processes end with their client."""
    client = Client().start()
    client.open("file:///slow.pbk", slow())
    server = children(client.process.pid)[0]
    time.sleep(0.3)
    [worker] = children(server)
    client.process.kill()
    client.process.wait()
    deadline = time.time() + 10
    while any(alive(pid) for pid in (server, worker)):
        assert time.time() < deadline
        time.sleep(0.02)
    wrong = subprocess.run([PBHOST, "lsp"], input=b"hello\r\n\r\n", capture_output=True, check=False)
    assert wrong.returncode == 2 and b"not that of a language client" in wrong.stderr, wrong
    assert Client().error("textDocument/hover", {}) == -32002


def alive(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        client = Client().start()
        for name, text in (("a%20b.pbk", KERNEL), ("graph.pbg", GRAPH)):
            uri = f"file://{folder}/{name}"
            test_diagnostics(client, uri, text)
            test_features(client, uri, text)
        test_protocol(client)
        test_crash(client)
        client.stop()
        test_ends()
    print("the language server answers")


if __name__ == "__main__":
    main()
