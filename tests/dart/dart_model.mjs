// What Dart files declare: types with their members, functions and variables,
// each with its type and parameters as they are written.
import {childOfType, childrenOfType, lineOf, nodesOfType, parseDartCalls}
  from './grammar.mjs';

const kTypes = ['class_definition', 'enum_declaration', 'extension_declaration',
                'mixin_declaration'];
const kTypeParts = ['type_identifier', 'type_arguments', 'nullable_type',
                    'void_type', 'function_type', 'record_type'];
const kConstructors = ['constructor_signature', 'constant_constructor_signature',
                       'factory_constructor_signature',
                       'redirecting_factory_constructor_signature'];

// The type written in front of a name: "Future<CaptureResult>?" for one.
export const typeIn = node =>
  childrenOfType(node, ...kTypeParts).map(part => part.text).join('');

// "Map<String, int>?" is {name: 'Map', args: ['String', 'int']}.
export function typeOf(text) {
  const match = /^(\w+)(?:<(.*)>)?\??$/s.exec((text ?? '').trim());
  if (!match) return {name: '', args: []};
  const args = [];
  let depth = 0, start = 0;
  const list = match[2] ?? '';
  for (let i = 0; i <= list.length; i++) {
    if ('<('.includes(list[i] ?? ' ')) depth++;
    if ('>)'.includes(list[i] ?? ' ')) depth--;
    if ((list[i] === ',' && depth === 0) || i === list.length) {
      args.push(list.slice(start, i).trim());
      start = i + 1;
    }
  }
  return {name: match[1], args: args.filter(arg => arg)};
}

// The parameters of a signature: how many positional ones at least and at
// most, and the named ones with whether they are required.
export function parametersOf(signature) {
  const found = {least: 0, most: 0, named: new Map(), types: new Map()};
  const list = signature && (signature.type === 'formal_parameter_list'
    ? signature : childOfType(signature, 'formal_parameter_list'));
  if (!list) return found;
  const read = (parameter, kind, isRequired) => {
    const inner = childOfType(parameter, 'constructor_param', 'super_formal_parameter');
    const name = (inner ? inner.namedChildren : parameter.namedChildren)
      .filter(child => child.type === 'identifier').at(-1)?.text;
    found.types.set(name, typeIn(parameter));
    if (kind === 'named') return void found.named.set(name, isRequired);
    found.most++;
    if (kind === 'positional') found.least++;
  };
  for (const child of childrenOfType(list, 'formal_parameter')) read(child, 'positional');
  for (const group of childrenOfType(list, 'optional_formal_parameters')) {
    const kind = group.text.startsWith('{') ? 'named' : 'optional';
    let isRequired = false;
    for (const child of group.children) {
      if (child.text === 'required') isRequired = true;
      if (child.type === 'formal_parameter') {
        read(child, kind, isRequired || /^required\b/.test(child.text));
        isRequired = false;
      }
    }
  }
  return found;
}

const isDocumented = node => {
  let before = node.previousNamedSibling;
  while (before?.type === 'annotation') before = before.previousNamedSibling;
  return before?.type === 'documentation_comment' && before.text.startsWith('///');
};

// The members that one child of a class body declares.
function membersIn(child, owner) {
  const common = {line: lineOf(child), isDocumented: isDocumented(child), node: child,
                  isOverride: child.previousNamedSibling?.text === '@override'};
  const isStatic = /^(external\s+)?static\b/.test(child.text);
  if (child.type === 'enum_constant') {
    return [{...common, kind: 'constant', isStatic: true, type: owner,
             name: child.childForFieldName('name').text}];
  }
  const constructor = nodesOfType(child, ...kConstructors)[0];
  if (constructor) {
    const names = childrenOfType(constructor, 'identifier').map(each => each.text);
    return [{...common, kind: 'constructor', isStatic: true, type: owner,
             name: names[1] ?? 'new', parameters: parametersOf(constructor)}];
  }
  const signature = nodesOfType(child, 'function_signature', 'getter_signature',
                                    'setter_signature')[0];
  if (signature && ['method_signature', 'declaration'].includes(child.type)) {
    const kind = {function_signature: 'method', getter_signature: 'getter',
                  setter_signature: 'setter'}[signature.type];
    return [{...common, kind, isStatic, type: typeIn(signature),
             name: signature.childForFieldName('name').text,
             parameters: parametersOf(signature)}];
  }
  if (child.type !== 'declaration') return [];
  return nodesOfType(child, 'initialized_identifier', 'static_final_declaration')
    .filter(each => each.parent.parent === child)
    .map(each => ({...common, kind: 'field', isStatic, type: typeIn(child),
                   name: each.namedChildren[0].text, value: each}));
}

const superclassOf = node => {
  const superclass = childOfType(node, 'superclass');
  return superclass ? typeIn(superclass) : '';
};

function typeDeclaration(node, file) {
  const name = node.childForFieldName('name')?.text;
  const supers = [];
  // What a class implements it declares itself, unless it is abstract.
  const parts = /^(@\w+\s+)*(abstract|sealed)\b/.test(node.text)
    ? ['superclass', 'interfaces'] : ['superclass'];
  for (const part of childrenOfType(node, ...parts)) {
    supers.push(...nodesOfType(part, 'type_identifier'));
  }
  const on = node.childForFieldName('class');
  const body = node.childForFieldName('body');
  const declared = {name, file, node, line: lineOf(node), kind: node.type.split('_')[0],
                    isDocumented: isDocumented(node), members: [],
                    isSealed: childOfType(node, 'sealed') !== null,
                    on: on?.text, superclass: superclassOf(node), supers: supers.filter(each =>
                      each.parent.type !== 'type_arguments').map(each => each.text)};
  for (const child of body?.namedChildren ?? []) {
    declared.members.push(...membersIn(child, name));
  }
  return declared;
}

// `files` is a list of {path, text}; the model keeps their trees too.
export function modelOf(files) {
  const model = {files: [], types: new Map(), functions: []};
  for (const {path, text} of files) {
    const root = parseDartCalls(text);
    const file = {path, text, root, types: [], functions: []};
    model.files.push(file);
    for (const node of root.namedChildren) {
      const common = {file, node, line: lineOf(node), isDocumented: isDocumented(node)};
      if (kTypes.includes(node.type)) {
        const declared = typeDeclaration(node, file);
        file.types.push(declared);
        model.types.set(declared.name, declared);
      } else if (['function_signature', 'getter_signature'].includes(node.type)) {
        file.functions.push({...common, kind: 'method', type: typeIn(node),
                             name: node.childForFieldName('name').text,
                             parameters: parametersOf(node)});
      } else if (['static_final_declaration_list', 'initialized_identifier_list']
                 .includes(node.type)) {
        const type = [];
        for (let at = node.previousNamedSibling; at && kTypeParts.includes(at.type);
             at = at.previousNamedSibling) type.unshift(at.text);
        for (const each of node.namedChildren) {
          file.functions.push({...common, kind: 'field', type: type.join(''),
                               name: each.namedChildren[0].text, value: each});
        }
      }
    }
    model.functions.push(...file.functions);
  }
  return model;
}

export const isPublic = name => !name.startsWith('_');

// The subtypes of a sealed type; of another type nothing is known.
export const subtypesOf = (model, type) => !type.isSealed ? []
  : [...model.types.values()].filter(each => each.supers.includes(type.name));
