// A real OpenID provider on loopback that signs in one person at once. scripts/providers.sh puts it
// beside the packages it needs.
//
//     node openIdProvider.js --client ID --secret SECRET --redirect URL [--email ADDRESS] [--unverified] [--deny] [--basic]
//
// Its first line on standard output is {"issuer": "http://127.0.0.1:PORT"}. It ends where its standard input ends, so it
// never outlives whoever started it.
import { generateKeyPairSync, randomBytes } from "node:crypto";
import { createServer } from "node:http";
import { parseArgs } from "node:util";

console.info = console.warn = () => {}; // standard output is for whoever started this

const { default: Provider, interactionPolicy } = await import("oidc-provider");

const { values: options } = parseArgs({
    options: {
        client: { type: "string" },
        secret: { type: "string" },
        redirect: { type: "string" },
        email: { type: "string", default: "student@example.org" },
        unverified: { type: "boolean", default: false },
        deny: { type: "boolean", default: false },
        basic: { type: "boolean", default: false },
    },
});

function signingKey() {
    const { privateKey } = generateKeyPairSync("rsa", { modulusLength: 2048 });
    return { ...privateKey.export({ format: "jwk" }), use: "sig", alg: "RS256", kid: randomBytes(8).toString("hex") };
}

function prompts() {
    const policy = interactionPolicy.base();
    policy.add(new interactionPolicy.Prompt({ name: "select_account", requestable: true }), 0);
    return policy;
}

const method = options.basic ? "client_secret_basic" : "client_secret_post";

const configuration = {
    clients: [{
        client_id: options.client,
        client_secret: options.secret,
        redirect_uris: [options.redirect],
        token_endpoint_auth_method: method,
    }],
    clientAuthMethods: [method],
    jwks: { keys: [signingKey()] },
    cookies: { keys: [randomBytes(32).toString("hex")] },
    pkce: { required: () => true, methods: ["S256"] },
    claims: { openid: ["sub"], email: ["email", "email_verified"] },
    conformIdTokenClaims: false, // the address stands in the ID token itself, as Google has it
    features: { devInteractions: { enabled: false } },
    interactions: { policy: prompts(), url: (_, interaction) => `/sign-in/${interaction.uid}` },
    findAccount: (_, id) => ({
        accountId: id,
        claims: () => ({ sub: id, email: options.email, email_verified: !options.unverified }),
    }),
    async loadExistingGrant(context) {
        const { client, session, provider } = context.oidc;
        const grant = new provider.Grant({ clientId: client.clientId, accountId: session.accountId });
        grant.addOIDCScope("openid email");
        await grant.save();
        return grant;
    },
};

const server = createServer();
server.listen(0, "127.0.0.1", () => {
    const issuer = `http://127.0.0.1:${server.address().port}`;
    const provider = new Provider(issuer, configuration);
    const answer = provider.callback();
    server.on("request", (request, response) => {
        if (!request.url.startsWith("/sign-in/")) {
            answer(request, response);
            return;
        }
        const result = options.deny
            ? { error: "access_denied", error_description: "the person has said no" }
            : { login: { accountId: "17" }, select_account: {} };
        provider.interactionFinished(request, response, result, { mergeWithLastSubmission: false })
            .catch((error) => response.writeHead(400).end(String(error)));
    });
    process.stdout.write(`${JSON.stringify({ issuer })}\n`);
});

process.stdin.on("end", () => process.exit(0)).resume();
