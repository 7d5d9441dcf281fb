// The words that the Dart library says on the channels.
import {nodesIn, nodesOfType, stringOf} from './grammar.mjs';

// Each call of something named `pattern`, as {name, args}.
function* callsOf(root, pattern) {
  for (const node of nodesOfType(root, 'arguments')) {
    const part = node.parent.parent;
    const before = part?.type === 'selector' ? part.previousNamedSibling : null;
    const name = /\w+$/.exec(before?.text ?? '')?.[0] ?? '';
    if (pattern.test(name)) yield {name, args: node.namedChildren};
  }
}

const literalIn = argument => stringOf(argument?.namedChildren[0]);

function channelsOf(roots, type) {
  return new Set(roots.flatMap(root =>
    [...callsOf(root, new RegExp(`^${type}$`))].map(({args}) => literalIn(args[0]))));
}

const keysOfMap = map => nodesOfType(map, 'pair')
  .map(pair => stringOf(pair.childForFieldName('key'))).sort();

// What goes along: the keys of a map literal, bytes, or nothing.
function argumentKind(argument) {
  if (!argument) return [];
  const map = nodesOfType(argument, 'set_or_map_literal')[0];
  return map ? keysOfMap(map) : ['<bytes>'];
}

function methodsOf(roots) {
  const methods = {};
  for (const root of roots) {
    for (const {args} of callsOf(root, /^invoke\w*Method$/)) {
      methods[literalIn(args[0])] = argumentKind(args[1]);
    }
  }
  return methods;
}

// String keys that a function returning `type` looks up.
function keysReadFor(model, type) {
  const keys = new Set();
  for (const {node, type: returned} of model.functions) {
    if (returned.replace('?', '') !== type || !node.nextNamedSibling) continue;
    for (const index of nodesOfType(node.nextNamedSibling, 'index_selector')) {
      keys.add(stringOf(index.namedChildren[0]));
    }
  }
  return keys;
}

// The constant `unknown` stands for what the plugin has no word for.
function enumWords(model, name) {
  const members = model.types.get(name)?.members ?? [];
  const constants = members.filter(each => each.kind === 'constant' &&
                                           each.name !== 'unknown');
  return new Set(constants.map(({node}) =>
    nodesIn(node).map(stringOf).find(word => word !== null)));
}

const valueOf = member => member?.value?.namedChildren.at(-1) ?? null;

const fieldOf = (model, type, name) =>
  model.types.get(type)?.members.find(member => member.name === name);

const numberOf = node => Number(/-?\d+/.exec(node?.text ?? '')?.[0]);

// The default of the named parameter `name` wherever it is one, as written.
function defaultsOf(model, name) {
  const found = new Set();
  for (const {root} of model.files) {
    for (const each of nodesOfType(root, 'formal_parameter')) {
      if (each.namedChildren.at(-1)?.text !== name) continue;
      const next = each.nextNamedSibling;
      const isDefault = next && !['formal_parameter', 'annotation'].includes(next.type);
      const rest = isDefault && next.nextNamedSibling?.type === 'selector'
        ? next.nextNamedSibling.text : '';
      found.add(isDefault ? (next.text + rest).replace(/^Corvane\./, '') : 'none');
    }
  }
  return found;
}

export function dartWords(model) {
  const roots = model.files.map(({root}) => root);
  const domains = (model.types.get('CorvaneException')?.members ?? [])
    .filter(({name, isStatic}) => isStatic && name.endsWith('Domain'));
  const constant = name => valueOf(model.functions.find(each => each.name === name));
  const rates = valueOf(fieldOf(model, 'AdtsHeader', 'sampleRates'));
  return {
    methodChannel: channelsOf(roots, 'MethodChannel'),
    logChannel: channelsOf(roots, 'EventChannel'),
    methods: methodsOf(roots),
    resultKeys: keysReadFor(model, 'CaptureResult'),
    errorKeys: keysReadFor(model, 'CorvaneException'),
    logKeys: keysReadFor(model, 'CorvaneLogLine'),
    errorCodes: enumWords(model, 'CorvaneErrorCode'),
    errorDomains: new Set(domains.map(member => stringOf(valueOf(member)))),
    logLevels: enumWords(model, 'CorvaneLogLevel'),
    defaultBitRate: numberOf(valueOf(fieldOf(model, 'Corvane', 'defaultBitRate'))),
    bitRateDefaults: defaultsOf(model, 'bitRate'),
    orphanInfix: stringOf(constant('_orphanInfix')),
    orphanSlots: numberOf(constant('_orphanSlots')),
    sampleRates: rates ? rates.text.match(/\d+/g).map(Number) : [],
    maxUnansweredBytes:
      numberOf(valueOf(fieldOf(model, 'CaptureSink', 'defaultMaxUnansweredBytes'))),
  };
}
