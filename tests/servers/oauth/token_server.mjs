// An OAuth2 server on a free port of 127.0.0.1, whose number is the first line out.
//
//   node token_server.mjs REQUESTS TOKENS
//
// The bodies of token requests are appended to the file REQUESTS and the access tokens given to TOKENS, a line each,
// before the answer is sent. Orders come as lines of standard input, fields parted by tabs; each is answered by a line.
// The grant of signed assertions is one that the package does not know: it is served as the client's own.
import { appendFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { createInterface } from 'node:readline';
import { OAuth2Server } from 'oauth2-mock-server';

const [requestsFile, tokensFile] = process.argv.slice(2);
const state = { token: undefined, expires: 3600, refusal: undefined };

const orders = {
  token: (text) => (state.token = text),
  expires: (seconds) => (state.expires = seconds === 'never' ? undefined : Number(seconds)),
  refuse: (error, description) => (state.refusal = { error, error_description: description }),
  accept: () => (state.refusal = undefined),
};

const { issuer, service } = new OAuth2Server();
await issuer.keys.generate('ES256');

service.on('beforeResponse', (answer) => {
  if (state.refusal) {
    answer.statusCode = 400;
    answer.body = state.refusal;
    return;
  }
  if (state.token !== undefined) answer.body.access_token = state.token;
  answer.body.expires_in = state.expires; // undefined leaves it out
  appendFileSync(tokensFile, `${answer.body.access_token}\n`);
});

const server = createServer(async (request, response) => {
  const parts = [];
  for await (const part of request) parts.push(part);
  const text = Buffer.concat(parts).toString();
  appendFileSync(requestsFile, `${text}\n`);
  request.body = Object.fromEntries(new URLSearchParams(text));
  request._body = true; // read already: the package does not wait for it again
  if (request.body.grant_type === 'urn:ietf:params:oauth:grant-type:jwt-bearer') {
    request.body.grant_type = 'client_credentials';
  }
  service.requestHandler(request, response);
});

server.listen(0, '127.0.0.1', () => {
  const { port } = server.address();
  issuer.url = `http://127.0.0.1:${port}`;
  console.log(port);
});

createInterface({ input: process.stdin }).on('line', (line) => {
  const [order, ...values] = line.split('\t');
  orders[order](...values);
  console.log('done');
});
