// Parse trees of Dart and C++, and small ways to walk them.
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {pathToFileURL} from 'node:url';

const languages = {};
let Parser;

// `modules` is the node_modules folder with the parser and the grammars.
export async function loadGrammars(modules) {
  const entry = join(modules, 'web-tree-sitter', 'tree-sitter.js');
  const sitter = await import(pathToFileURL(entry));
  Parser = sitter.Parser;
  await Parser.init();
  for (const name of ['dart', 'cpp']) {
    const file = join(modules, 'tree-sitter-wasms', 'out',
                      `tree-sitter-${name}.wasm`);
    languages[name] = await sitter.Language.load(readFileSync(file));
  }
}

// A node of a tree, out of the parser's memory: walking there is slow.
class Node {
  constructor(cursor, source, parent) {
    const node = cursor.currentNode;
    this.type = node.type;
    this.isNamed = node.isNamed;
    this.isError = node.isError;
    this.isMissing = node.isMissing;
    this.startPosition = node.startPosition;
    this.text = source.slice(node.startIndex, node.endIndex);
    this.field = cursor.currentFieldName;
    this.parent = parent;
    this.children = [];
    if (cursor.gotoFirstChild()) {
      do this.children.push(new Node(cursor, source, this));
      while (cursor.gotoNextSibling());
      cursor.gotoParent();
    }
    this.namedChildren = this.children.filter(({isNamed}) => isNamed);
    this.namedChildren.forEach((child, at) => { child.at = at; });
    this.hasError = node.isError || node.isMissing ||
      this.children.some(({hasError}) => hasError);
  }

  get previousNamedSibling() { return this.parent?.namedChildren[this.at - 1] ?? null; }

  get nextNamedSibling() { return this.parent?.namedChildren[this.at + 1] ?? null; }

  childForFieldName(name) {
    return this.children.find(({field}) => field === name) ?? null;
  }
}

const parsed = new Map();

const blanked = text => text.replace(/[^\n]/g, ' ');

// The Dart grammar wants a name behind `library`; a library needs none.
const kNamelessLibrary = /^library;$/m;

export function parse(language, text) {
  const key = `${language} ${text}`;
  if (!parsed.has(key)) {
    const parser = new Parser();
    parser.setLanguage(languages[language]);
    const tree = parser.parse(language === 'dart'
      ? text.replace(kNamelessLibrary, blanked) : text);
    parsed.set(key, new Node(tree.walk(), text, null));
    tree.delete();
    parser.delete();
  }
  return parsed.get(key);
}

// The Dart grammar takes the type arguments of some calls for comparisons,
// which is no error to it. Where calls are looked at, they are blanked out.
const kType = '[\\w?., ]|\\([^()]*\\)';
const kTypeArguments = `<(?:${kType}|<(?:${kType}|<(?:${kType})*>)*>)*>`;
const kCallTypeArguments = new RegExp(
  `(?<=\\w)${kTypeArguments}(?=\\()|(?<=\\b[A-Z]\\w*)${kTypeArguments}(?=\\.\\w)`, 'g');

export const parseDartCalls = text =>
  parse('dart', text.replace(kCallTypeArguments, blanked));

// The names of types in what is blanked out there.
export const typeNamesInCalls = text =>
  (text.match(kCallTypeArguments) ?? []).flatMap(each => each.match(/\b[A-Z]\w*/g) ?? []);

// To the C++ grammar GLib's owning pointer is no type.
export function parseCpp(text) {
  return parse('cpp', text.replace(/\bg_autoptr\((\w+)\)/g, '$1*'));
}

// All nodes at or below `node`, parents first.
export function nodesIn(node) {
  const found = [];
  const waiting = [node];
  while (waiting.length) {
    const each = waiting.pop();
    found.push(each);
    for (let i = each.namedChildren.length - 1; i >= 0; i--) {
      waiting.push(each.namedChildren[i]);
    }
  }
  return found;
}

export const nodesOfType = (node, ...types) =>
  nodesIn(node).filter(({type}) => types.includes(type));

export const childOfType = (node, ...types) =>
  node.namedChildren.find(child => types.includes(child.type)) ?? null;

export const childrenOfType = (node, ...types) =>
  node.namedChildren.filter(child => types.includes(child.type));

export const lineOf = node => node.startPosition.row + 1;

// The value of a string literal without escapes and interpolation, else null.
export function stringOf(node) {
  if (node?.type !== 'string_literal') return null;
  const match = /^(['"])([^'"\\$]*)\1$/.exec(node.text);
  return match ? match[2] : null;
}
