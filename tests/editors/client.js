// Drives `pbhost lsp` with the protocol library of VS Code. Usage: node client.js PBHOST
'use strict';
const assert = require('assert');
const { spawn } = require('child_process');
const path = require('path');
const { createRequire } = require('module');

// The libraries are installed in the current folder.
const load = createRequire(path.join(process.cwd(), 'node_modules', 'none.js'));
const rpc = load('vscode-jsonrpc/node');
const lsp = load('vscode-languageserver-protocol');

const uri = 'file:///folder/test.pbk';
const text = `<languageVersion : 1.0;>
kernel Test < namespace : "n"; vendor : "v"; version : 1; >
{
    parameter float gain < defaultValue: 1.0; maxValue: 4.0; >;
    input image4 src;
    output pixel4 dst;
    void evaluatePixel() {
        dst = sampleNeares(src, outCoord()) * gain;
    }
}
`;

async function main() {
  const server = spawn(process.argv[2], ['lsp', '--stdio'], { stdio: ['pipe', 'pipe', 'inherit'] });
  const ended = new Promise((resolve) => server.on('exit', resolve));
  const connection = rpc.createMessageConnection(new rpc.StreamMessageReader(server.stdout),
                                                 new rpc.StreamMessageWriter(server.stdin));
  const published = [];
  let notify = () => {};
  connection.onNotification(lsp.PublishDiagnosticsNotification.type, (found) => {
    published.push(found);
    notify();
  });
  const nextDiagnostics = async () => {
    while (published.length === 0) await new Promise((resolve) => { notify = resolve; });
    return published.shift().diagnostics;
  };
  connection.listen();

  const { capabilities } = await connection.sendRequest(lsp.InitializeRequest.type,
    { processId: process.pid, rootUri: null, capabilities: {} });
  assert.strictEqual(capabilities.textDocumentSync.change, lsp.TextDocumentSyncKind.Full);
  await connection.sendNotification(lsp.InitializedNotification.type, {});

  await connection.sendNotification(lsp.DidOpenTextDocumentNotification.type,
    { textDocument: { uri, languageId: 'pixelbender', version: 1, text } });
  const [wrong] = await nextDiagnostics();
  assert.ok(lsp.Diagnostic.is(wrong));
  assert.strictEqual(wrong.severity, lsp.DiagnosticSeverity.Error);
  assert.deepStrictEqual(wrong.range,
    { start: { line: 7, character: 14 }, end: { line: 7, character: 26 } });

  const fixed = text.replace('sampleNeares(', 'sampleNearest(');
  await connection.sendNotification(lsp.DidChangeTextDocumentNotification.type,
    { textDocument: { uri, version: 2 }, contentChanges: [{ text: fixed }] });
  assert.deepStrictEqual(await nextDiagnostics(), []);

  const at = { textDocument: { uri }, position: { line: 7, character: 48 } };
  const hover = await connection.sendRequest(lsp.HoverRequest.type, at);
  assert.ok(lsp.Hover.is(hover) && hover.contents.value.includes('parameter float gain'));
  const completion = await connection.sendRequest(lsp.CompletionRequest.type, at);
  assert.ok(completion.items.every((item) => typeof item.label === 'string'));
  assert.ok(completion.items.some((item) => item.label === 'outCoord'));
  const [kernel] = await connection.sendRequest(lsp.DocumentSymbolRequest.type, { textDocument: { uri } });
  assert.ok(lsp.DocumentSymbol.is(kernel) && kernel.children.length === 4);

  await connection.sendRequest(lsp.ShutdownRequest.type);
  await connection.sendNotification(lsp.ExitNotification.type);
  assert.strictEqual(await ended, 0);
  console.log('the protocol library of VS Code accepts the server');
}

main().catch((error) => {
  console.error(error);
  process.exit(1);
});
