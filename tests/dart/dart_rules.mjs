// Rules of the Dart code that a parse tree can show. Each has cost somebody a
// take, or would.
import {lineOf, nodesOfType, parseDartCalls} from './grammar.mjs';
import {dartFilesIn} from './dart_sources.mjs';

// Each rule takes a file's tree, and calls `hold(node, isHeld, fault)` for
// whatever it has looked at.

// The signature of the function around `node`.
function signatureAround(node) {
  let at = node;
  while (at.parent && !/^(function_body|class_body|program)$/.test(at.parent.type)) {
    at = at.parent;
  }
  return at.parent?.type === 'function_body' ? at.parent.previousNamedSibling : null;
}

const wordsIn = (root, ...words) => nodesOfType(root, 'identifier')
  .filter(({text}) => words.includes(text));

// "Not found" is said of whatever fails, also of a file in a folder that may not
// be searched. The one place that asks further is `isThere`.
function absenceIsAskedFor(root, hold) {
  for (const node of wordsIn(root, 'notFound', 'exists', 'existsSync')) {
    hold(node, signatureAround(node)?.text.includes('isThere(') ?? false,
         `"${node.text}" takes every failure for absence`);
  }
}

// A field that is set later may be read before.
function fieldsAreSet(root, hold) {
  for (const node of nodesOfType(root, 'declaration')) {
    if (/^late\b/.test(node.text)) {
      hold(node, /[^=]=[^=]/.test(node.text) || isSetIn(node, 'initState'),
           `"${node.text}" may be read before it is set`);
    }
  }
}

const isSetIn = (node, method) => {
  const name = nodesOfType(node, 'identifier').at(-1).text;
  return new RegExp(`${method}\\(\\) \\{[^}]*\\b${name} =`).test(node.parent.text);
};

// What is listened to is listened to for ever unless somebody cancels it.
function subscriptionsEnd(root, hold) {
  for (const node of wordsIn(root, 'listen')) {
    if (!node.parent.type.endsWith('assignable_selector')) continue;
    const statement = /[^;{]*$/.exec(textBefore(root, node))[0];
    hold(node, /=(?!>)|\breturn\b/.test(statement),
         'nobody keeps the subscription, to cancel it');
  }
  for (const node of nodesOfType(root, 'declaration')) {
    const name = /^StreamSubscription<.*>\?? (\w+)/s.exec(node.text)?.[1];
    if (name) hold(node, new RegExp(`\\b${name}\\??\\s*\\.cancel\\(\\)`).test(root.text),
                   `"${name}" is never cancelled`);
  }
}

const textBefore = (root, node) =>
  root.text.split('\n').slice(0, node.startPosition.row).join('\n') + '\n' +
  root.text.split('\n')[node.startPosition.row].slice(0, node.startPosition.column);

// An error out of a `finally` takes the place of the one before it.
function finallyHidesNothing(root, hold) {
  for (const node of nodesOfType(root, 'finally_clause')) {
    for (const each of nodesOfType(node, 'await_expression')) {
      hold(each, /^await _guarded\(/.test(each.text),
           'an error here would hide the one before it');
    }
  }
}

// A clock that can be set, or that goes on while a flush takes its time.
function timeIsMonotonic(root, hold) {
  for (const node of wordsIn(root, 'Timer', 'DateTime')) {
    const next = node.nextNamedSibling?.text ?? '';
    hold(node, !/^\.(periodic|now)/.test(next), `"${node.text}${next}" is no clock here`);
  }
}

const kRules = [
  [/^(lib|example\/lib)\//, absenceIsAskedFor, fieldsAreSet, subscriptionsEnd],
  [/^lib\//, timeIsMonotonic],
  [/^example\/lib\//, finallyHidesNothing],
];

// What holds for one place alone: [file, what must stand there, what it is for].
const kPlaces = [
  ['lib/src/adts_header.dart', /_channelCounts = <int>\[0, 1, 2, 3, 4, 5, 6, 8\];/,
   'the last channel configuration means 8 channels'],
  ['lib/src/corvane.dart', /_answerOf[^}]*\{\s*try[^]*on Platform\w+[^]*on MissingPlugin\w+/,
   'every call that fails throws the one exception'],
  ['lib/src/capture_sink.dart', /defaultFlushEvery = Duration\(seconds: 1\)/,
   'a take is flushed every second'],
  ['lib/src/capture_sink.dart', /defaultMaxUnansweredBytes = 524288/,
   'half a MiB may be unanswered'],
  ['lib/src/capture_result.dart', /operator ==[^]*hashCode/, 'results are values'],
  ['lib/src/corvane_log.dart', /operator ==[^]*hashCode/, 'log lines are values'],
  ['lib/corvane.dart', /^library;$/m, 'a library needs no name'],
  ['example/lib/src/recorder.dart', /CaptureSink\([^;]*flushEvery:/,
   'the example shows the flushes'],
  ['example/lib/src/recorder.dart', /void dispose\(\)/, 'a recorder ends'],
  ['example/lib/src/unfinished_takes.dart', /CorvaneErrorCode\.verifyFailed/,
   'a capture without a whole frame is offered once'],
  ['example/lib/src/take_store.dart', /named\.startsWith\('\/'\)/,
   'an empty XDG_DATA_HOME is none'],
];

export function rules(texts) {
  let count = 0;
  const faults = [];
  for (const {path, text} of dartFilesIn(texts)) {
    const root = parseDartCalls(text);
    const hold = (node, isHeld, fault) => {
      count++;
      if (!isHeld) faults.push(`${path}:${lineOf(node)}: ${fault}`);
    };
    for (const [pattern, ...rulesThere] of kRules) {
      if (pattern.test(path)) for (const rule of rulesThere) rule(root, hold);
    }
  }
  for (const [path, wanted, reason] of kPlaces) {
    count++;
    if (!wanted.test(texts.get(path) ?? '')) faults.push(`${path}: not so: ${reason}`);
  }
  const invoked = text => (text.match(/\.invoke\w*Method/g) ?? []).length;
  const answered = text => (text.match(/_(answer|result)Of\(\s*_channel\s*\.invoke/g) ?? []).length;
  const corvane = texts.get('lib/src/corvane.dart') ?? '';
  count++;
  if (invoked(corvane) !== answered(corvane)) {
    faults.push('lib/src/corvane.dart: not so: every answer is looked at for errors');
  }
  return {count, faults};
}
