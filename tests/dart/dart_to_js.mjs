// Dart as JavaScript, as far as the sink's files go, so that what they do can be
// tried where no SDK is: classes with fields, named parameters and methods,
// functions, async, tear-offs, and errors told apart by their types.
import {childOfType, childrenOfType, nodesOfType, parseDartCalls} from './grammar.mjs';
import {localsIn} from './dart_scopes.mjs';

const kSilent = new Set(['comment', 'documentation_comment', 'annotation',
                         'const_builtin', 'import_or_export']);

const isCalled = node => {
  const next = node.nextNamedSibling;
  return next?.type === 'selector' && next.namedChildren[0]?.type === 'argument_part';
};

class Writer {
  // `members` says of each name of the class whether it is a 'method', a
  // 'static' one or a 'field'; `locals` has the names that hide them.
  constructor(owner, members, locals) {
    Object.assign(this, {owner, members, locals});
  }

  all(nodes) { return nodes.map(node => this.write(node)).join(' '); }

  write(node) {
    if (kSilent.has(node.type)) return '';
    const special = this[`write_${node.type}`];
    if (special) return special.call(this, node);
    return node.children.length ? this.all(node.children) : node.text;
  }

  write_identifier(node) {
    const {text} = node;
    if (/selector$/.test(node.parent.type)) return text;
    const kind = this.locals.has(text) ? undefined : this.members.get(text);
    if (kind === 'static') return `${this.owner}.${text}`;
    if (kind === 'method' && !isCalled(node)) return `this.${text}.bind(this)`;
    if (kind) return `this.${text}`;
    return /^[A-Z]/.test(text) && isCalled(node) ? `new ${text}` : text;
  }

  write_string_literal(node) { return node.text; }

  write_arguments(node) {
    const named = childrenOfType(node, 'named_argument').map(each => this.write(each));
    const all = childrenOfType(node, 'argument').map(each => this.write(each));
    if (named.length) all.push(`{${named.join(', ')}}`);
    return `(${all.join(', ')})`;
  }

  write_named_argument(node) {
    return `${childOfType(node, 'label').text} ` +
      this.all(node.children.filter(({type}) => type !== 'label'));
  }

  write_initialized_variable_definition(node) {
    const at = node.children.findIndex(({field}) => field === 'name');
    return `let ${node.children[at].text} ${this.all(node.children.slice(at + 1))}`;
  }

  write_const_object_expression(node) {
    return `new ${childOfType(node, 'type_identifier').text}` +
      this.write(childOfType(node, 'arguments'));
  }

  write_type_test_expression(node) {
    const test = childOfType(node, 'type_test');
    const tested = node.children.filter(each => each !== test);
    return `(${this.all(tested)} instanceof ${childOfType(test, 'type_identifier').text})`;
  }

  write_function_expression(node) {
    const [list, body] = node.namedChildren;
    return `${this.parameters(list)} => ${this.all(body.children)}`;
  }

  // One clause of JavaScript's for all of Dart's.
  write_try_statement(node) {
    let type = null, names = [], text = '', last = '';
    for (const each of node.namedChildren.slice(1)) {
      if (each.type === 'type_identifier') type = each.text;
      if (each.type === 'catch_clause') {
        names = nodesOfType(each, 'identifier').map(name => name.text);
      }
      if (each.type === 'finally_clause') last = this.write(each);
      if (each.type !== 'block') continue;
      const given = names.map((name, at) => `let ${name} = ${at ? 'null' : 'thrown'};`);
      text += `if (${type ? `thrown instanceof ${type}` : 'true'}) ` +
        `{ ${given.join(' ')} ${this.write(each)} } else `;
      [type, names] = [null, []];
    }
    const caught = text ? `catch (thrown) { ${text} throw thrown; }` : '';
    return `try ${this.write(node.namedChildren[0])} ${caught} ${last}`;
  }

  parameters(list) {
    const nameOf = each => nodesOfType(each, 'identifier').at(-1).text;
    const plain = childrenOfType(list, 'formal_parameter').map(nameOf);
    const group = childOfType(list, 'optional_formal_parameters');
    if (!group) return `(${plain.join(', ')})`;
    const named = group.children.slice(1, -1).map(each =>
      each.type === 'formal_parameter' ? nameOf(each)
        : each.type === 'required' ? '' : this.write(each));
    return `(${[...plain, `{${named.join(' ')}} = {}`].join(', ')})`;
  }

  // A signature with the body behind it, in front of which stands `head`.
  callable(head, signature, body) {
    const isAsync = body.children[0].type === 'async';
    const block = childOfType(body, 'block');
    const rest = body.children.filter(({type}) => !['async', '=>', ';'].includes(type));
    const list = childOfType(signature, 'formal_parameter_list');
    return `${isAsync ? 'async ' : ''}${head}${list ? this.parameters(list) : '()'} ` +
      (block ? this.write(block) : `{ return ${this.all(rest)}; }`);
  }
}

const inside = (owner, members, nodes) =>
  new Writer(owner, members, new Set(localsIn(nodes).keys()));

function constructorOf(owner, members, signature) {
  const list = childOfType(signature, 'formal_parameter_list');
  const names = nodesOfType(list, 'constructor_param').map(each =>
    childOfType(each, 'identifier').text);
  const writer = new Writer(owner, members, new Set());
  return `constructor${writer.parameters(list)} ` +
    `{ ${names.map(name => `this.${name} = ${name};`).join(' ')} }`;
}

function fieldOf(owner, members, declared, each) {
  const name = each.namedChildren[0].text;
  const value = inside(owner, members, []).all(each.children.slice(2)) || 'null';
  if (/^late\b/.test(declared.text)) {
    return `get ${name}() { return this.$${name} ??= ${value}; }`;
  }
  return `${/^static\b/.test(declared.text) ? 'static ' : ''}${name} = ${value};`;
}

const kFields = ['initialized_identifier', 'static_final_declaration'];

function membersOf(body) {
  const members = new Map();
  for (const child of body.namedChildren) {
    for (const each of nodesOfType(child, ...kFields)) {
      if (each.parent.parent !== child) continue;
      members.set(each.namedChildren[0].text,
                  /^static\b/.test(child.text) ? 'static' : 'field');
    }
    if (child.type !== 'method_signature') continue;
    const signature = child.namedChildren[0];
    members.set(signature.childForFieldName('name').text,
                signature.type === 'getter_signature' ? 'field' : 'method');
  }
  return members;
}

function classOf(node) {
  const owner = node.childForFieldName('name').text;
  const body = node.childForFieldName('body');
  const members = membersOf(body);
  const parts = body.namedChildren.flatMap(child => {
    const constructor = childOfType(child, 'constructor_signature');
    if (constructor) return constructorOf(owner, members, constructor);
    if (child.type === 'method_signature') {
      const signature = child.namedChildren[0];
      const get = signature.type === 'getter_signature' ? 'get ' : '';
      const code = child.nextNamedSibling;
      return inside(owner, members, [child, code])
        .callable(get + signature.childForFieldName('name').text, signature, code);
    }
    return nodesOfType(child, ...kFields).filter(each => each.parent.parent === child)
      .map(each => fieldOf(owner, members, child, each));
  });
  return `class ${owner} {\n${parts.join('\n')}\n}`;
}

// JavaScript that declares what the Dart file `text` does.
export function javaScriptOf(text) {
  return parseDartCalls(text).namedChildren.map(node => {
    if (node.type === 'class_definition') return classOf(node);
    if (node.type !== 'function_signature') return '';
    const body = node.nextNamedSibling;
    const name = node.childForFieldName('name').text;
    const isAsync = body.children[0].type === 'async';
    const code = inside(name, new Map(), [node, body]).callable(name, node, body);
    return isAsync ? code.replace('async ', 'async function ') : `function ${code}`;
  }).join('\n');
}
