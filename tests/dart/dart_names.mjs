// Whether every name in a Dart file is declared where the file can see it, and
// every import is needed. Names of the SDK are those of sdk_names.json: what
// isn't written there counts as unknown.
import {dirname, join, normalize} from 'node:path';
import {childOfType, childrenOfType, lineOf, nodesOfType, parse, typeNamesInCalls}
  from './grammar.mjs';
import {isPublic} from './dart_model.mjs';
import {unitsOf} from './dart_scopes.mjs';
import {inheritedFrom, namesOfLibrary} from './sdk.mjs';

// Identifiers that stand here name a member, a label or something new.
const kNamesNothing = new Set([
  'unconditional_assignable_selector', 'conditional_assignable_selector',
  'cascade_selector', 'label', 'formal_parameter', 'constructor_param',
  'super_formal_parameter', 'variable_pattern', 'catch_parameters',
  'function_signature', 'getter_signature', 'setter_signature', 'combinator',
  'dotted_identifier_list', 'enum_constant', 'constructor_signature',
  'constant_constructor_signature', 'factory_constructor_signature', 'qualified',
  'class_definition', 'enum_declaration', 'extension_declaration',
  'const_object_expression', 'new_expression', 'initializer_list_entry',
  'field_initializer', 'normal_parameter_type', 'typed_identifier',
  'initialized_identifier_list',
]);
// Here the first identifier is new, and others are used.
const kDeclaresFirst = new Set(['initialized_identifier', 'static_final_declaration',
                                'initialized_variable_definition', 'for_loop_parts']);

const isUse = node => {
  const {parent} = node;
  if (kNamesNothing.has(parent.type)) return false;
  return !(kDeclaresFirst.has(parent.type) &&
           childOfType(parent, 'identifier') === node);
};

const uriOf = node => /['"](.*)['"]/.exec(nodesOfType(node, 'uri')[0].text)[1];

const kPackages = {corvane: 'lib/', corvane_example: 'example/lib/'};

// The file of ours that `uri` means when it stands in the file `path`.
function fileOf(model, path, uri) {
  const [, name, rest] = /^package:(\w+)\/(.*)/.exec(uri) ?? [];
  const wanted = kPackages[name] ? kPackages[name] + rest
                                 : normalize(join(dirname(path), uri));
  return model.files.find(file => file.path === wanted);
}

// What an import or export of `uri` brings, or null when there is no such thing.
function namesBehind(model, path, uri, node) {
  const shown = childrenOfType(node, 'combinator').flatMap(each =>
    childrenOfType(each, 'identifier').map(({text}) => text));
  const file = fileOf(model, path, uri);
  const all = file ? namesOf(model, file) : namesOfLibrary(uri);
  if (!all) return null;
  return shown.length ? {names: shown, absent: shown.filter(name => !all.includes(name))}
                      : {names: all, absent: []};
}

// What a file of ours offers to those that import it.
function namesOf(model, file) {
  const own = [...file.types, ...file.functions].map(({name}) => name).filter(isPublic);
  const exported = nodesOfType(file.root, 'library_export').flatMap(node =>
    namesBehind(model, file.path, uriOf(node), node)?.names ?? []);
  return [...own, ...exported];
}

function importsOf(model, file, report) {
  const imports = [{uri: 'dart:core', names: namesOfLibrary('dart:core'),
                    used: new Set()}];
  for (const node of nodesOfType(file.root, 'library_import', 'library_export')) {
    const target = node.type === 'library_import'
      ? node.namedChildren[0] : node;
    const uri = uriOf(node);
    const found = namesBehind(model, file.path, uri, target);
    if (!found) report(node, `nothing is known of ${uri}`);
    for (const name of found?.absent ?? []) report(node, `${uri} has no "${name}"`);
    imports.push({uri, node, names: found?.names ?? [], used: new Set(),
                  isExport: node.type === 'library_export'});
  }
  return imports;
}

const inheritedBy = (model, type, seen = new Set()) => {
  if (!type || seen.has(type)) return [];
  seen.add(type);
  const names = type.members.map(({name}) => name);
  for (const name of [...type.supers, type.on].filter(each => each)) {
    names.push(...(inheritedFrom(name) ?? []),
               ...inheritedBy(model, model.types.get(name), seen));
  }
  return names;
};

// The names that doc comments link to: an import for them is needed.
const linksIn = text => (text.match(/^ *\/\/\/.*$/gm) ?? [])
  .flatMap(line => [...line.matchAll(/\[(\w+)/g)].map(([, name]) => name));

// Whether the import `other` makes the import `each` unnecessary.
const isWider = (other, each) => each.used.size > 0 &&
  other.used.size > each.used.size && [...each.used].every(name => other.used.has(name));

// Faults in the names of one file of `model`, as lines of text.
export function faultsInNames(model, file, counted = {}) {
  const faults = new Set();
  counted.names ??= 0;
  const report = (node, text) => faults.add(`${file.path}:${lineOf(node)}: ${text}`);
  const imports = importsOf(model, file, report);
  const own = [...file.types, ...file.functions].map(({name}) => name);
  const look = (name, node) => {
    counted.names++;
    const sources = imports.filter(each => each.names.includes(name));
    for (const each of sources) each.used.add(name);
    if (!sources.length && !own.includes(name)) report(node, `"${name}" is unknown here`);
  };
  for (const {nodes, owner, locals} of unitsOf(file)) {
    const near = new Set([...locals.keys(), ...inheritedBy(model, owner)]);
    for (const node of nodes.flatMap(each =>
         nodesOfType(each, 'identifier', 'identifier_dollar_escaped'))) {
      if (isUse(node) && !near.has(node.text)) look(node.text, node);
    }
  }
  for (const annotation of nodesOfType(file.root, 'annotation')) {
    const name = annotation.childForFieldName('name');
    look(name.text, name);
  }
  const types = nodesOfType(parse('dart', file.text), 'type_identifier');
  const parameters = types.filter(({parent}) => parent.type === 'type_parameter')
    .map(({text}) => text);
  for (const node of types) if (!parameters.includes(node.text)) look(node.text, node);
  for (const name of typeNamesInCalls(file.text)) {
    if (!parameters.includes(name)) look(name, file.root);
  }
  for (const name of linksIn(file.text)) {
    for (const each of imports) if (each.names.includes(name)) each.used.add(name);
  }
  const needed = imports.filter(({node, isExport}) => node && !isExport);
  for (const each of needed) {
    if (!each.used.size) report(each.node, `${each.uri} is imported and not used`);
    const wider = needed.find(other => isWider(other, each));
    if (wider) report(each.node, `${wider.uri} brings all that is used of ${each.uri}`);
  }
  return [...faults];
}
