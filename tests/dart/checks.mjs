// The checks. Each takes the texts of a checkout by path, and returns what was
// looked at (a count) and what is wrong (lines of text), or a promise of them.
import {lineOf, nodesIn, parse} from './grammar.mjs';
import {isPublic, modelOf} from './dart_model.mjs';
import {dartFilesIn, snippetsIn} from './dart_sources.mjs';
import {faultsInNames} from './dart_names.mjs';
import {faultsInSwitches} from './dart_switches.mjs';
import {faultsInUses} from './dart_uses.mjs';
import {rules} from './dart_rules.mjs';
import {dartWords} from './dart_words.mjs';
import {generatedFiles} from './flutter_tool.mjs';
import {lookRuns} from './look_runs.mjs';
import {pluginWords} from './plugin_words.mjs';
import {sinkRuns} from './sink_runs.mjs';

// Every Dart file and snippet is Dart, as far as the grammar knows it.
export function syntax(texts) {
  const files = [...dartFilesIn(texts), ...snippetsIn(texts)];
  const faults = files.flatMap(({path, text}) => {
    const root = parse('dart', text);
    if (!root.hasError) return [];
    const wrong = nodesIn(root).filter(node => node.isError || node.isMissing);
    return [`${path}:${wrong.length ? lineOf(wrong[0]) : 1}: this is no Dart`];
  });
  return {count: files.length, faults};
}

const flat = words => words instanceof Set || Array.isArray(words)
  ? [...words].map(String)
  : typeof words === 'object' && words !== null
    ? Object.entries(words).map(([name, args]) => `${name}(${args.join(', ')})`)
    : [String(words)];

// Both sides of the channels say the same words, each for the same purpose.
export function channelWords(texts) {
  const library = [...texts].filter(([path]) => /^lib\/.*\.dart$/.test(path));
  const of = pattern => [...texts].filter(([path]) => pattern.test(path))
    .map(([, text]) => text);
  const plugin = pluginWords(of(/^src\//), of(/^host\//));
  const dart = dartWords(modelOf(library.map(([path, text]) => ({path, text}))));
  for (const kind of ['errorCodes', 'errorDomains', 'logLevels']) {
    dart[`${kind}Defined`] = dart[kind];
  }
  plugin.bitRateDefaults = new Set(['defaultBitRate']);
  let count = 0;
  const faults = [];
  for (const kind of new Set([...Object.keys(plugin), ...Object.keys(dart)])) {
    const [ours, theirs] = [flat(dart[kind] ?? []), flat(plugin[kind] ?? [])];
    const isHollow = words => !words.length ||
      words.some(word => ['undefined', 'null', 'NaN'].includes(word));
    if (isHollow(ours)) faults.push(`${kind}: nothing was found in Dart`);
    if (isHollow(theirs)) faults.push(`${kind}: nothing was found in C++`);
    for (const word of new Set([...ours, ...theirs])) {
      count++;
      if (!theirs.includes(word)) faults.push(`${kind}: only Dart has ${word}`);
      if (!ours.includes(word)) faults.push(`${kind}: only C++ has ${word}`);
    }
  }
  return {count, faults};
}

// Each public declaration and member of lib/ and of the example says what it is.
// What is overridden is documented where it comes from; an enum's constructor
// can't be called.
export function documentation(texts) {
  const model = modelOf(dartFilesIn(texts).filter(({path}) =>
    !/^(example\/)?(integration_)?test\//.test(path)));
  const wanted = [];
  for (const file of model.files) {
    for (const each of [...file.types, ...file.functions]) {
      if (!each.name || !isPublic(each.name) || each.name === 'main') continue;
      wanted.push({...each, file});
      for (const member of each.members ?? []) {
        const isExempt = member.isOverride || member.kind === 'setter' ||
          (each.kind === 'enum' && member.kind === 'constructor');
        if (isPublic(member.name) && !isExempt) {
          wanted.push({...member, file, name: `${each.name}.${member.name}`});
        }
      }
    }
  }
  const faults = wanted.filter(({isDocumented}) => !isDocumented)
    .map(({file, line, name}) => `${file.path}:${line}: ${name} has no doc comment`);
  return {count: wanted.length, faults};
}

// One program's own declarations must not answer for another's: the library
// with the example, with the tests, and with each snippet.
function* programsIn(texts) {
  const files = dartFilesIn(texts);
  const below = folder => files.filter(({path}) => path.startsWith(folder));
  yield [...below('lib/'), ...below('test/')];
  yield [...below('lib/'), ...below('test/fake_plugin.dart'), ...below('example/')];
  for (const snippet of snippetsIn(texts)) yield [...below('lib/'), snippet];
}

// Memory of what was found in a program, for the self-test changes but one.
const known = new Map();

function found(program, faultsIn) {
  const key = faultsIn.name + program.map(({path, text}) => path + text).join();
  if (!known.has(key)) {
    const model = modelOf(program);
    known.set(key, model.files.map(file => {
      const counted = {};
      const faults = faultsIn(model, file, counted);
      return {path: file.path, faults, count: Object.values(counted)[0] ?? 0};
    }));
  }
  return known.get(key);
}

function inEach(texts, faultsIn) {
  const files = new Map();
  for (const program of programsIn(texts)) {
    for (const each of found(program, faultsIn)) {
      if (!files.has(each.path)) files.set(each.path, each);
    }
  }
  const all = [...files.values()];
  return {count: all.reduce((sum, {count}) => sum + count, 0),
          faults: all.flatMap(({faults}) => faults)};
}

const faultsInMembers = (model, file, counted) =>
  [...faultsInUses(model, file, counted), ...faultsInSwitches(model, file)];

// Members that are used exist, with the parameters that they are given.
export const members = texts => inEach(texts, faultsInMembers);

// Names are declared or imported, and imports are needed.
export const names = texts => inEach(texts, faultsInNames);

const text = (texts, path) => texts.get(path) ?? '';

const field = (source, name) =>
  new RegExp(`^\\s*${name}: *(\\S.*)$`, 'm').exec(source)?.[1];

// What `judge` holds: it calls its argument with [what must be so, the fault].
function held(judge) {
  const faults = [];
  let count = 0;
  judge((condition, fault) => {
    count++;
    if (!condition) faults.push(fault);
  });
  return {count, faults};
}

// As the Flutter tool derives them from the pubspec.
function pluginOf(texts) {
  const pubspec = text(texts, 'pubspec.yaml');
  const pluginClass = field(pubspec, 'pluginClass') ?? '';
  return {name: field(pubspec, 'name'), pluginClass,
          header: pluginClass.replace(/(?<!^)([A-Z])/g, '_$1').toLowerCase()};
}

// The package fits what the Flutter tool makes of its pubspec.
const thePackage = texts => held(hold => {
  const pubspec = text(texts, 'pubspec.yaml');
  const {name, header} = pluginOf(texts);
  hold(text(texts, `include/${name}/${header}.h`).includes(`${header}_register_with_registrar(`),
       `include/${name}/${header}.h does not declare what an application calls`);
  hold(/^ {4}platforms:\n {6}linux:\n {8}pluginClass:/m.test(pubspec),
       'pubspec.yaml: the plugin is none for Linux');
  hold(/^dependencies:\n {2}flutter:\n {4}sdk: flutter\n\n/m.test(pubspec),
       'pubspec.yaml: there are other dependencies than flutter');
  const version = field(pubspec, 'version');
  hold(version && text(texts, 'CMakeLists.txt').includes(`VERSION ${version} `),
       `pubspec.yaml: version ${version} is not CMakeLists.txt's`);
  hold(text(texts, 'CHANGELOG.md').includes(`## ${version}`),
       `CHANGELOG.md does not tell of version ${version}`);
  hold(text(texts, 'analysis_options.yaml').startsWith('include: package:flutter_lints/'),
       'analysis_options.yaml: the usual lints are left out');
});

// The example is as the Flutter tool would have laid it out, so that a build
// leaves it as it is.
const theExample = texts => held(hold => {
  for (const [path, wanted] of Object.entries(generatedFiles(pluginOf(texts)))) {
    hold(text(texts, path) === wanted, `${path} is not what the Flutter tool writes`);
  }
  for (const bound of ['sdk', 'flutter', 'flutter_lints']) {
    const [ours, its] = ['', 'example/'].map(folder =>
      field(text(texts, `${folder}pubspec.yaml`), bound));
    hold(ours && ours === its, `example/pubspec.yaml: its bound on "${bound}" is another`);
  }
  hold(/g_set_prgname\(APPLICATION_ID\);[^]*g_object_new/.test(
         text(texts, 'example/linux/runner/my_application.cc')),
       'example/linux/runner: the program is not named after the application');
  hold(/^project_type: app$/m.test(text(texts, 'example/.metadata')),
       'example/.metadata does not say what the project is');
});

// README's way to a first take is short, and shows that it is one.
const theFirstTake = texts => held(hold => {
  const first = [...snippetsIn(texts)].find(({path, isWhole}) =>
    isWhole && path.startsWith('README.md'))?.code ?? '';
  const lines = first.trim().split('\n').filter(line => line.trim()).length;
  hold(['start(', 'pipe(', 'close('].every(call => first.includes(call)),
       'README.md: no whole program leads to a sealed take');
  hold(lines < 20, `README.md: the first take needs ${lines} lines of Dart`);
  hold(first.includes('runApp('), 'README.md: the first take opens no window');
  hold(/Process\.start\([^]*\.start\(\s*capturePath:/.test(first),
       'README.md: the first take begins before its microphone');
});

export const allChecks = {
  syntax, 'channel words': channelWords, documentation, members, names, rules,
  'look runs': lookRuns, 'sink runs': sinkRuns,
  package: thePackage, example: theExample, 'first take': theFirstTake,
};
