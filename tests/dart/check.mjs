// Checks the Dart side of the package without a Dart SDK:
//
//   node tests/dart/check.mjs NODE_MODULES
//
// from the root of the checkout. Prints a line a check, and what is wrong; exits
// with 1 when something is.
import {allChecks} from './checks.mjs';
import {readCheckout} from './dart_sources.mjs';
import {loadGrammars} from './grammar.mjs';
import {selfTest} from './self_test.mjs';

if (process.argv.length !== 3) {
  console.error('usage: node tests/dart/check.mjs NODE_MODULES');
  process.exit(2);
}
await loadGrammars(process.argv[2]);
const texts = readCheckout('.');
let isWrong = false;
for (const [name, check] of Object.entries({...allChecks, 'self-test': selfTest})) {
  const {count, faults} = await check(texts);
  for (const fault of faults) console.log(fault);
  console.log(`dart ${name}: ${Math.max(count - faults.length, 0)} passed, ` +
              `${faults.length} failed`);
  isWrong ||= faults.length > 0 || count === 0;
}
process.exitCode = isWrong ? 1 : 0;
