// The words that the plugin's C++ sources say on the channels, by what is done
// with them: each is found where it is used, and followed to its definition.
import {nodesIn, nodesOfType, parseCpp, stringOf} from './grammar.mjs';

const declaratorName = node => {
  let at = node;
  while (at?.childForFieldName('declarator')) {
    at = at.childForFieldName('declarator');
  }
  return at?.type === 'reference_declarator' ? at.namedChildren.at(-1)?.text
                                             : at?.text;
};

const parametersOf = declarator => {
  const list = nodesOfType(declarator, 'parameter_list')[0];
  return list ? list.namedChildren
    .filter(child => child.type.includes('parameter_declaration'))
    .map(child => declaratorName(child.childForFieldName('declarator'))) : [];
};

const calledName = call => {
  const called = call.childForFieldName('function');
  return called.childForFieldName('field')?.text ?? called.text;
};

const argumentsOf = call => call.childForFieldName('arguments').namedChildren
  .filter(child => child.type !== 'comment');

const surveyed = new Map();

// Everything of interest in one source: constants by name, functions by name
// (lambdas with a name too), and the calls, each with the function around it.
function surveyFile(text) {
  if (surveyed.has(text)) return surveyed.get(text);
  const root = parseCpp(text);
  const survey = {constants: [], functions: [], calls: [], root};
  const walk = (node, outer) => {
    let inside = outer;
    const value = node.childForFieldName('value');
    if (node.type === 'init_declarator' && value) {
      const name = declaratorName(node);
      if (/^k[A-Z]/.test(name)) survey.constants.push([name, value]);
      if (value.type === 'lambda_expression') {
        const parameters = parametersOf(value.childForFieldName('declarator') ?? value);
        survey.functions.push([name, {node: value, outer, parameters}]);
      }
    } else if (node.type === 'function_definition') {
      const declarator = node.childForFieldName('declarator');
      inside = declaratorName(declarator).split('::').at(-1);
      survey.functions.push([inside, {node, parameters: parametersOf(declarator)}]);
    } else if (node.type === 'call_expression') {
      survey.calls.push({name: calledName(node), inside, args: argumentsOf(node)});
    }
    for (const child of node.namedChildren) walk(child, inside);
  };
  walk(root, null);
  surveyed.set(text, survey);
  return survey;
}

function surveyOf(sources) {
  const files = sources.map(surveyFile);
  return {
    constants: new Map(files.flatMap(({constants}) => constants)),
    functions: new Map(files.flatMap(({functions}) => functions)),
    calls: files.flatMap(({calls}) => calls),
    roots: files.map(({root}) => root),
  };
}

// Calls whose argument `index` is a word of the kind that `names` take there,
// and every function that passes a parameter of its own on to them.
function* wordArguments({functions, calls}, names) {
  const takers = new Map(names);
  for (let size = -1; size !== takers.size;) {
    size = takers.size;
    for (const {name, inside, args} of calls) {
      const passed = args[takers.get(name)]?.text;
      if (!passed) continue;
      for (const [candidate, {parameters, outer}] of functions) {
        const isAround = candidate === inside || outer === inside;
        const at = parameters.indexOf(passed);
        if (isAround && at >= 0 && !takers.has(candidate)) takers.set(candidate, at);
      }
    }
  }
  for (const {name, inside, args} of calls) {
    if (takers.has(name)) yield {inside, node: args[takers.get(name)]};
  }
}

// The words in an expression: literals and constants, both arms of a choice.
const wordsIn = (survey, node) => node ? nodesIn(node).flatMap(each => {
  const value = each.type === 'identifier' ? survey.constants.get(each.text) : each;
  return stringOf(value) ?? [];
}) : [];

const wordsPassed = (survey, names, isInside = () => true) =>
  new Set([...wordArguments(survey, names)]
    .filter(({inside}) => isInside(inside))
    .flatMap(({node}) => wordsIn(survey, node)));

// The functions that `node` names, and those that they name in turn.
function reachableFrom(survey, node) {
  const reached = new Set();
  const visit = from => {
    for (const each of nodesOfType(from, 'identifier', 'type_identifier')) {
      const known = survey.functions.get(each.text);
      if (known && !reached.has(each.text)) {
        reached.add(each.text);
        visit(known.node);
      }
    }
  };
  visit(node);
  return reached;
}

const callersOf = ({calls}, name) =>
  new Set(calls.filter(call => call.name === name).map(call => call.inside));

function methodsOf(survey) {
  const methods = {};
  for (const entry of survey.constants.get('kMethods')?.namedChildren ?? []) {
    const [name, handler] = entry.namedChildren;
    const reached = reachableFrom(survey, handler);
    const keys = wordsPassed(survey, [['fl_value_lookup_string', 1]],
                             inside => reached.has(inside));
    const takesBytes = [...callersOf(survey, 'fl_value_get_uint8_list')]
      .some(caller => reached.has(caller));
    methods[stringOf(name)] = takesBytes ? ['<bytes>'] : [...keys].sort();
  }
  return methods;
}

// Keys of the map that is built in the function which makes the call `name`.
function keysSentBy(survey, name) {
  const callers = callersOf(survey, name);
  return wordsPassed(survey, [['fl_value_set_string_take', 1]],
                     inside => callers.has(inside));
}

const numberIn = node => Number(/-?\d+/.exec(node?.text ?? '')?.[0]);

function fieldDefault(survey, type, field) {
  for (const root of survey.roots) {
    for (const each of nodesOfType(root, 'struct_specifier')) {
      if (each.childForFieldName('name')?.text !== type) continue;
      for (const declared of nodesOfType(each, 'field_declaration')) {
        if (declaratorName(declared) === field) {
          return numberIn(declared.childForFieldName('default_value'));
        }
      }
    }
  }
  return NaN;
}

const constantsNamed = (survey, prefix) => [...survey.constants]
  .filter(([name]) => name.startsWith(prefix)).map(([, value]) => stringOf(value));

// `sources` are the texts of the plugin's files, `host` those of the command
// line, which bounds its appends as an application should.
export function pluginWords(sources, host) {
  const survey = surveyOf(sources);
  const errors = ['plain_error', 'domain_error', 'errno_error', 'ffmpeg_error'];
  const number = (name, from = survey) => numberIn(from.constants.get(name));
  const rates = survey.constants.get('kSamplingFrequencies');
  return {
    methodChannel: wordsPassed(survey, [['fl_method_channel_new', 1]]),
    logChannel: wordsPassed(survey, [['fl_event_channel_new', 1]]),
    methods: methodsOf(survey),
    resultKeys: keysSentBy(survey, 'fl_method_success_response_new'),
    errorKeys: keysSentBy(survey, 'fl_method_error_response_new'),
    logKeys: keysSentBy(survey, 'fl_event_channel_send'),
    errorCodes: wordsPassed(survey, errors.map(name => [name, 0])),
    errorCodesDefined: new Set(constantsNamed(survey, 'kErr')),
    errorDomains: wordsPassed(survey, [['domain_error', 3]]),
    errorDomainsDefined: new Set(constantsNamed(survey, 'kDomain')),
    logLevels: wordsPassed(survey, [['Log', 0], ['log', 0]]),
    logLevelsDefined: new Set(constantsNamed(survey, 'kLevel')),
    defaultBitRate: fieldDefault(survey, 'FormatArgs', 'bit_rate'),
    orphanInfix: stringOf(survey.constants.get('kOrphanInfix')),
    orphanSlots: number('kOrphanSlots'),
    sampleRates: rates ? rates.text.match(/\d+/g).map(Number) : [],
    maxUnansweredBytes: number('kMostUnansweredBytes', surveyOf(host)),
  };
}
