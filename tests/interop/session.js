// What both roles share: a session that prints everything, and how one is set up.
'use strict'

require('reflect-metadata')
const path = require('path')
const { AsciiSession, EmptyLogFactory, SessionLauncher } = require('jspurefix')

const dictionary = path.join(path.dirname(require.resolve('jspurefix/package.json')), 'data/FIX44.xml')

class PrintingSession extends AsciiSession {
  onDecoded (type, text) {
    print(`in ${text}`)
  }

  onEncoded (type, text) {
    print(`out ${text}`)
  }

  onLogon () {
    return true
  }

  onReady () {
    print('logged on')
  }

  onStopped () {
    print('stopped')
  }

  // The link ends at once, with whatever is still to be written.
  cut () {
    this.transport.duplex.socket.destroy(new Error('the link is cut'))
  }
}

class Launcher extends SessionLauncher {
  constructor (initiator, acceptor, makeSession) {
    super(initiator, acceptor, new EmptyLogFactory())
    this.makeSession = makeSession
  }

  makeFactory () {
    return { makeSession: this.makeSession }
  }
}

function print (line) {
  process.stdout.write(line + '\n')
}

function description (type, sender, target, port, store) {
  return {
    application: {
      type,
      name: type,
      protocol: 'ascii',
      dictionary,
      resilient: type === 'initiator',
      recoveryAttemptSeconds: 1,
      tcp: { host: '127.0.0.1', port: Number(port) }
    },
    Username: 'js',
    Password: 'js',
    EncryptMethod: 0,
    ResetSeqNumFlag: false,
    HeartBtInt: 10,
    SenderCompId: sender,
    TargetCompID: target,
    BeginString: 'FIX.4.4',
    store: { type: 'file', directory: store }
  }
}

module.exports = { Launcher, PrintingSession, description, print }
