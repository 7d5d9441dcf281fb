// Whether Dart files use only members that exist, with parameters that exist:
// every chain of selectors is followed as far as its types are declared here.
import {childOfType, childrenOfType, lineOf, nodesIn, nodesOfType}
  from './grammar.mjs';
import {parametersOf, subtypesOf, typeIn, typeOf} from './dart_model.mjs';
import {localType, unitsOf} from './dart_scopes.mjs';
import {inheritedFrom} from './sdk.mjs';

const kOfAnyObject = ['toString', 'hashCode', 'runtimeType', 'noSuchMethod'];
const kOfEnums = {index: 'int', name: 'String'};

const supertypesOf = (model, type) => type.supers
  .map(name => model.types.get(name) ?? {name, isForeign: true});

// Of a type that isn't ours only some members are known, if any.
function findInherited(type, name) {
  const known = inheritedFrom(type.name);
  if (!known) return undefined;
  return known.includes(name) ? {kind: 'field', type: ''} : null;
}

// A sealed type's members are those of its subtypes too: the files ask for the
// subtype before they use them.
//
// Returns the member, null when there is none, undefined where that can't be told.
function findMember(model, type, name, isStatic, seen = new Set()) {
  if (seen.has(type)) return null;
  seen.add(type);
  if (type.isForeign) return findInherited(type, name);
  const own = type.members.find(member => member.name === name &&
                                          member.isStatic === isStatic);
  if (own) return own;
  if (isStatic) {
    return type.kind === 'enum' && name === 'values'
      ? {kind: 'field', type: `List<${type.name}>`} : null;
  }
  if (kOfAnyObject.includes(name)) return {kind: 'field', type: ''};
  if (type.kind === 'enum' && kOfEnums[name]) return {kind: 'field', type: kOfEnums[name]};
  const related = [...supertypesOf(model, type), ...subtypesOf(model, type),
    ...[...model.types.values()].filter(each => each.on === type.name)];
  if (type.on) related.push(model.types.get(type.on) ?? {isForeign: true});
  let result = null;
  for (const each of related) {
    const found = findMember(model, each, name, false, seen);
    if (found) return found;
    if (found === undefined) result = undefined;
  }
  return result;
}

function faultInArguments(parameters, list) {
  const named = childrenOfType(list, 'named_argument').map(argument =>
    childOfType(argument, 'label').text.replace(/\s*:$/, ''));
  const count = childrenOfType(list, 'argument').length;
  if (count < parameters.least) return `wants ${parameters.least} arguments, not ${count}`;
  if (count > parameters.most) return `takes ${parameters.most} arguments, not ${count}`;
  for (const name of named) {
    if (!parameters.named.has(name)) return `has no parameter "${name}"`;
  }
  for (const [name, isRequired] of parameters.named) {
    if (isRequired && !named.includes(name)) return `wants "${name}"`;
  }
  return null;
}

class Follower {
  constructor(model, unit, report, count) {
    Object.assign(this, {model, unit, report, count});
  }

  instance(type) {
    const {name} = typeOf(type);
    return {type, declared: this.model.types.get(name) ?? null};
  }

  // What stands at the start of a chain.
  start(node) {
    const {model, unit} = this;
    if (node.type === 'this') return {declared: unit.owner};
    if (node.type === 'parenthesized_expression') return this.inner(node);
    if (node.type === 'const_object_expression' || node.type === 'new_expression') {
      return this.constructed(node);
    }
    if (node.type !== 'identifier') return null;
    const local = localType(unit.locals, node);
    if (local !== null) return this.instance(local);
    const {name, args} = typeOf(unit.owner?.superclass);
    if (name === 'State' && node.text === 'widget') return this.instance(args[0]);
    if (unit.owner) {
      const member = findMember(model, unit.owner, node.text, false) ||
                     findMember(model, unit.owner, node.text, true);
      if (member) return this.reached(member, node.text);
    }
    const type = model.types.get(node.text);
    if (type) return {isStatic: true, declared: type};
    const known = model.functions.filter(each => each.name === node.text);
    return known.length === 1 ? this.reached(known[0], node.text) : null;
  }

  reached(member, name) {
    return member.parameters && member.kind !== 'getter'
      ? {callable: member, name, type: member.type}
      : this.instance(member.type);
  }

  // `(await x.y())` and `(x as T)`.
  inner(node) {
    const cast = nodesOfType(node, 'type_cast').at(-1);
    if (cast) return this.instance(typeIn(cast));
    const awaited = nodesOfType(node, 'await_expression')[0];
    if (!awaited) return null;
    const future = this.follow(awaited.namedChildren);
    const {name, args} = typeOf(future?.type);
    return name === 'Future' ? this.instance(args[0]) : null;
  }

  constructed(node) {
    const declared = this.model.types.get(childOfType(node, 'type_identifier')?.text);
    const named = childOfType(node, 'identifier')?.text ?? 'new';
    if (declared) this.call(this.constructor_(declared, named, node),
                            childOfType(node, 'arguments'), declared.name);
    return declared ? this.instance(declared.name) : null;
  }

  constructor_(declared, name, node) {
    const all = declared.members.filter(({kind}) => kind === 'constructor');
    const found = all.find(each => each.name === name);
    if (found || (name === 'new' && all.length === 0)) {
      return found ?? {parameters: parametersOf(null), type: declared.name};
    }
    this.report(node, `${declared.name} has no constructor "${name}"`);
    return null;
  }

  call(callable, list, name) {
    if (!callable?.parameters || !list) return;
    this.count();
    const fault = faultInArguments(callable.parameters, list);
    if (fault) this.report(list, `${name} ${fault}`);
  }

  member(state, node) {
    if (!state?.declared) return null;
    const {declared} = state;
    const isStatic = state.isStatic ?? false;
    const found = findMember(this.model, declared, node.text, isStatic);
    if (found !== undefined) this.count();
    if (found === null) this.report(node, `${declared.name} has no "${node.text}"`);
    return found ? this.reached(found, node.text) : null;
  }

  argumentsOf(state, list, node) {
    if (!state) return null;
    if (state.isStatic) {
      this.call(this.constructor_(state.declared, 'new', node), list, state.declared.name);
      return this.instance(state.declared.name);
    }
    if (!state.callable) return null;
    this.call(state.callable, list, state.name);
    return this.instance(state.callable.type);
  }

  // Follows [start, selector...]; what can't be told is null from there on.
  follow(nodes) {
    let state = this.start(nodes[0]);
    for (const node of nodes.slice(1)) {
      if (node.type === 'cascade_section') {
        this.cascade(state, node);
        continue;
      }
      if (node.type !== 'selector') break;
      const part = node.namedChildren[0];
      if (!part) continue; // the "!" of a null check
      if (/assignable_selector$/.test(part.type)) {
        const name = childOfType(part, 'identifier');
        state = name ? this.member(state, name) : null;
      } else if (part.type === 'argument_part') {
        state = this.argumentsOf(state, childOfType(part, 'arguments'), node);
      }
    }
    return state;
  }

  cascade(state, section) {
    const selector = childOfType(section, 'cascade_selector');
    const name = selector && childOfType(selector, 'identifier');
    if (!name) return;
    const reached = this.member(state, name);
    const list = childOfType(section, 'argument_part');
    if (reached?.callable && list) {
      this.call(reached.callable, childOfType(list, 'arguments'), reached.name);
    }
  }
}

// The chains in a tree: runs of siblings that begin with no selector.
function* chainsIn(node) {
  for (const each of nodesIn(node)) {
    const children = each.namedChildren;
    for (let i = 0; i < children.length; i++) {
      const goesOn = at => ['selector', 'cascade_section'].includes(children[at]?.type);
      if (goesOn(i)) continue;
      const alone = ['const_object_expression', 'new_expression'].includes(children[i].type);
      if (!goesOn(i + 1) && !alone) continue;
      let end = i + 1;
      while (goesOn(end)) end++;
      yield children.slice(i, end);
    }
  }
}

// Faults in the uses of one file of `model`, as lines of text; `counted` gets
// the number of members and calls that were told good from bad.
export function faultsInUses(model, file, counted = {}) {
  const faults = new Set();
  const report = (node, text) => faults.add(`${file.path}:${lineOf(node)}: ${text}`);
  counted.uses ??= 0;
  const count = () => counted.uses++;
  for (const unit of unitsOf(file)) {
    const follower = new Follower(model, unit, report, count);
    for (const node of unit.nodes) {
      for (const chain of chainsIn(node)) follower.follow(chain);
      for (const name of nodesOfType(node, 'qualified')) {
        const [type, member] = name.namedChildren;
        const declared = model.types.get(type.text);
        if (declared && member) follower.member({isStatic: true, declared}, member);
      }
    }
  }
  return [...faults];
}
