// A WebSocket client for test_websocket.py, made with the library "ws". Its one argument is a JSON object:
//   url, ca (text of the certificate to trust), steps: [[action, ...], ...]
// Each step waits for its answer before the next one begins. It prints one JSON line per step. Payloads are told by
// their length and made here, so that their content can be compared here too.
'use strict';
const WebSocket = require('ws');
const options = JSON.parse(process.argv[2]);

function payload(length, binary) {
  const bytes = Buffer.alloc(length);
  for (let i = 0; i < length; i++) bytes[i] = binary ? (i * 31 + (i >> 8)) & 255 : 97 + (i * 7 + (i >> 8)) % 26;
  return bytes;
}

const socket = new WebSocket(options.url, { ca: options.ca });
const say = (value) => console.log(JSON.stringify(value));
const once = (event) => new Promise((resolve) => socket.once(event, (...values) => resolve(values)));

async function echo(kind, lengths) {
  const binary = kind === 'binary';
  const parts = lengths.map((length) => payload(length, binary));
  const answer = once('message');
  parts.forEach((part, i) => socket.send(part, { binary, fin: i === parts.length - 1 }));
  const [data, isBinary] = await answer;
  return [data.equals(Buffer.concat(parts)), isBinary === binary];
}

async function burst(count) {
  const lengths = [];
  const all = new Promise((resolve) => {
    socket.on('message', (data) => {
      lengths.push(data.length);
      if (lengths.length === count) resolve();
    });
  });
  for (let i = 0; i < count; i++) socket.send(payload(i, true));
  await all;
  socket.removeAllListeners('message');
  return lengths.every((length, i) => length === i);
}

const actions = {
  echo,
  burst,
  async ping(text) {
    const pong = once('pong');
    socket.ping(text);
    return (await pong)[0].toString();
  },
  async close(code, reason) {
    const closed = once('close');
    socket.close(code, reason);
    const [got, why] = await closed;
    return [got, why.toString()];
  },
  async terminate() {
    const closed = once('close');
    socket.terminate();
    return (await closed)[0];
  },
};

async function run() {
  await once('open');
  for (const [name, ...values] of options.steps) say(await actions[name](...values));
}

socket.on('error', (error) => {
  console.error(error.message);
  process.exit(1);
});
run();
